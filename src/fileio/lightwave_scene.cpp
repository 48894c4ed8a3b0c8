/*
 * fileio/lightwave_scene.cpp - LightWave scenes ("LWSC" text files):
 * the objects a scene loads ("LoadObjectLayer", "LoadObject") and its
 * nulls ("AddNullObject"), each placed by the first key of its motion
 * (the old form, nine values per key, and the form of LightWave 6 and
 * later, one envelope per channel) and parented as "ParentItem" or
 * "ParentObject" says.  Object files are looked for where the scene names
 * them, next to the scene, in the scene's parent folder and by their bare
 * name next to the scene; one that cannot be read is reported and the
 * rest load.  Everything else in a scene (lights, cameras, bones, later
 * keys, envelopes of other values) is not read.
 */
#include "fileio/lightwave.h"
#include "fileio/import_support.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <sys/stat.h>

namespace {

struct SceneItem {
    std::string path;          /* the object file as the scene names it; empty for a null */
    std::string name;          /* a null's name */
    int layer = -1;            /* LoadObjectLayer's layer (1-based), or -1 for all */
    double channels[9] = {0, 0, 0, 0, 0, 0, 1, 1, 1};   /* x y z h p b sx sy sz */
    bool channel_set[9] = {};
    float pivot[3] = {0, 0, 0};
    long parent = -1;          /* an item's index, or -1 */
};

struct SceneReader {
    std::vector<std::string> lines;
    size_t at = 0;
    std::vector<SceneItem> items;
    long current = -1;         /* the item whose settings are being read */
    int channel = -1;          /* the envelope channel being read */
    std::string error;
};

std::vector<std::string> split_words(const std::string &line)
{
    std::vector<std::string> words;
    size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && isspace((unsigned char)line[i])) i++;
        size_t start = i;
        while (i < line.size() && !isspace((unsigned char)line[i])) i++;
        if (i > start) words.push_back(line.substr(start, i - start));
    }
    return words;
}

/* The line after its first n words, trimmed. */
std::string rest_of_line(const std::string &line, int n)
{
    size_t i = 0;
    for (int w = 0; w < n; w++) {
        while (i < line.size() && isspace((unsigned char)line[i])) i++;
        while (i < line.size() && !isspace((unsigned char)line[i])) i++;
    }
    while (i < line.size() && isspace((unsigned char)line[i])) i++;
    size_t end = line.size();
    while (end > i && isspace((unsigned char)line[end - 1])) end--;
    return line.substr(i, end - i);
}

bool parse_number(const std::string &word, double *value)
{
    char *end;
    errno = 0;
    double v = strtod(word.c_str(), &end);
    if (end == word.c_str() || *end || !std::isfinite(v) || std::fabs(v) > 1e30) return false;
    *value = v;
    return true;
}

void split_lines(const char *text, size_t size, std::vector<std::string> *lines)
{
    size_t start = 0;
    for (size_t i = 0; i <= size; i++) {
        if (i < size && text[i] != '\n') continue;
        size_t end = i;
        if (end > start && text[end - 1] == '\r') end--;
        lines->emplace_back(text + start, end - start);
        start = i + 1;
    }
}

bool add_item(SceneReader *r, SceneItem item)
{
    if (r->items.size() >= LW_MAX_SCENE_ITEMS) {
        r->error = "the scene loads more than " + std::to_string((int)LW_MAX_SCENE_ITEMS) + " objects";
        return false;
    }
    r->items.push_back(std::move(item));
    r->current = (long)r->items.size() - 1;
    r->channel = -1;
    return true;
}

/* The old motion form: a channel count line, a key count line, then per
 * key the channel values (and a line of frame and spline values). */
void read_old_motion(SceneReader *r, SceneItem *item)
{
    std::vector<double> numbers;
    double count = 0;
    while (r->at < r->lines.size()) {
        std::vector<std::string> words = split_words(r->lines[r->at]);
        double v;
        if (words.empty() || !parse_number(words[0], &v)) break;
        r->at++;
        for (const std::string &w : words) {
            if (parse_number(w, &v)) numbers.push_back(v);
        }
        if (numbers.size() >= 2) {
            count = numbers[0];
            if (!(count >= 0 && count <= 64)) return;
            if (numbers.size() >= 2 + (size_t)count) break;
        }
    }
    if (numbers.size() < 2 || numbers[1] < 1) return;
    size_t n = (size_t)count;
    for (size_t k = 0; k < n && k < 9 && 2 + k < numbers.size(); k++) {
        item->channels[k] = numbers[2 + k];
        item->channel_set[k] = true;
    }
}

void read_motion(SceneReader *r)
{
    r->channel = -1;
    while (r->at < r->lines.size() && split_words(r->lines[r->at]).empty()) r->at++;
    if (r->at >= r->lines.size()) return;
    std::vector<std::string> words = split_words(r->lines[r->at]);
    if (words[0] == "NumChannels") return;   /* the envelopes follow as Channel blocks */
    read_old_motion(r, &r->items[r->current]);
}

void read_key(SceneReader *r, const std::vector<std::string> &words)
{
    if (r->channel < 0 || r->channel >= 9 || words.size() < 2) return;
    SceneItem &item = r->items[r->current];
    double v;
    /* The first key is the first frame's value. */
    if (item.channel_set[r->channel] || !parse_number(words[1], &v)) return;
    /* Envelopes keep angles in radians (the old form keeps degrees). */
    if (r->channel >= 3 && r->channel <= 5) v *= 180 / M_PI;
    item.channels[r->channel] = v;
    item.channel_set[r->channel] = true;
}

void read_parent(SceneReader *r, const std::vector<std::string> &words)
{
    if (words.size() < 2) return;
    SceneItem &item = r->items[r->current];
    if (words[0] == "ParentItem") {
        char *end;
        unsigned long id = strtoul(words[1].c_str(), &end, 16);
        if (*end || (id >> 28) != 1) return;   /* only parents that are objects */
        item.parent = (long)(id & 0x0FFFFFFF);
    } else {
        double n;
        if (parse_number(words[1], &n) && n >= 1 && n <= LW_MAX_SCENE_ITEMS) item.parent = (long)n - 1;
    }
}

/* Later versions write an item's own number (eight hex digits) before
 * the path or name; it is passed over. */
bool is_item_number(const std::vector<std::string> &words, size_t at)
{
    if (words.size() <= at + 1 || words[at].size() != 8) return false;
    for (char ch : words[at]) {
        if (!isxdigit((unsigned char)ch)) return false;
    }
    return true;
}

bool read_line(SceneReader *r, const std::string &line)
{
    std::vector<std::string> words = split_words(line);
    if (words.empty()) return true;
    const std::string &key = words[0];
    if (key == "LoadObjectLayer" && words.size() >= 3) {
        SceneItem item;
        double layer;
        item.layer = parse_number(words[1], &layer) && layer >= 1 && layer <= 65536 ? (int)layer : 1;
        item.path = rest_of_line(line, is_item_number(words, 2) ? 3 : 2);
        return add_item(r, item);
    }
    if (key == "LoadObject" && words.size() >= 2) {
        SceneItem item;
        item.path = rest_of_line(line, 1);
        return add_item(r, item);
    }
    if (key == "AddNullObject") {
        SceneItem item;
        item.name = words.size() >= 2 ? rest_of_line(line, is_item_number(words, 1) ? 2 : 1) : "null";
        return add_item(r, item);
    }
    if (key.compare(0, 3, "Add") == 0 || key.compare(0, 4, "Load") == 0) {
        /* A light, camera or bone: what follows is its own. */
        r->current = -1;
        r->channel = -1;
        return true;
    }
    if (r->current < 0) return true;
    if (key == "ObjectMotion") {
        read_motion(r);
    } else if (key == "Channel" && words.size() >= 2) {
        double c;
        r->channel = parse_number(words[1], &c) && c >= 0 && c < 9 ? (int)c : -1;
    } else if (key == "}") {
        r->channel = -1;
    } else if (key == "Key") {
        read_key(r, words);
    } else if ((key == "PivotPosition" || key == "PivotPoint") && words.size() >= 4) {
        double v[3];
        if (parse_number(words[1], &v[0]) && parse_number(words[2], &v[1]) && parse_number(words[3], &v[2])) {
            for (int i = 0; i < 3; i++) r->items[r->current].pivot[i] = (float)v[i];
        }
    } else if (key == "ParentItem" || key == "ParentObject") {
        read_parent(r, words);
    }
    return true;
}

/* p -> a(b(p)) */
LwTransform compose(const LwTransform &a, const LwTransform &b)
{
    LwTransform c;
    for (int i = 0; i < 3; i++) {
        for (int j = 0; j < 3; j++) {
            c.m[i * 3 + j] = a.m[i * 3] * b.m[j] + a.m[i * 3 + 1] * b.m[3 + j] + a.m[i * 3 + 2] * b.m[6 + j];
            c.r[i * 3 + j] = a.r[i * 3] * b.r[j] + a.r[i * 3 + 1] * b.r[3 + j] + a.r[i * 3 + 2] * b.r[6 + j];
        }
        c.t[i] = a.m[i * 3] * b.t[0] + a.m[i * 3 + 1] * b.t[1] + a.m[i * 3 + 2] * b.t[2] + a.t[i];
    }
    return c;
}

/* An item's placement within its parent: LightWave moves the pivot to
 * the origin, scales, banks (about z), pitches (about x), heads (about
 * y), then moves to the position; angles in degrees, in its left-handed
 * space (heading 90 turns +z to +x). */
LwTransform local_transform(const SceneItem &item)
{
    const double *c = item.channels;
    double d = M_PI / 180;
    double ch = cos(c[3] * d), sh = sin(c[3] * d), cp = cos(c[4] * d), sp = sin(c[4] * d);
    double cb = cos(c[5] * d), sb = sin(c[5] * d);
    double r[9] = {ch * cb + sh * sp * sb, -ch * sb + sh * sp * cb, sh * cp,
                   cp * sb,                cp * cb,                 -sp,
                   -sh * cb + ch * sp * sb, sh * sb + ch * sp * cb, ch * cp};
    LwTransform t;
    for (int i = 0; i < 9; i++) t.r[i] = r[i];
    for (int i = 0; i < 3; i++) {
        for (int j = 0; j < 3; j++) t.m[i * 3 + j] = r[i * 3 + j] * c[6 + j];
    }
    for (int i = 0; i < 3; i++) {
        t.t[i] = c[i] - (t.m[i * 3] * item.pivot[0] + t.m[i * 3 + 1] * item.pivot[1] + t.m[i * 3 + 2] * item.pivot[2]);
    }
    return t;
}

/* Drops parents that name no item or make a cycle. */
void check_parents(std::vector<SceneItem> *items, std::vector<std::string> *warnings)
{
    long n = (long)items->size();
    for (long i = 0; i < n; i++) {
        SceneItem &item = (*items)[i];
        if (item.parent >= n) {
            warnings->push_back("object " + std::to_string(i + 1) + " names a parent that is not in the scene");
        }
        if (item.parent >= n || item.parent == i || item.parent < -1) item.parent = -1;
    }
    for (long i = 0; i < n; i++) {
        SceneItem &item = (*items)[i];
        long p = item.parent;
        for (long steps = 0; p >= 0 && steps <= n; steps++) {
            if (p == i) {
                warnings->push_back("object " + std::to_string(i + 1) + " is its own ancestor: left unparented");
                item.parent = -1;
                break;
            }
            p = (*items)[p].parent;
        }
    }
}

void world_transforms(const std::vector<SceneItem> &items, std::vector<LwTransform> *world)
{
    size_t n = items.size();
    world->assign(n, lw_identity());
    std::vector<char> done(n, 0);
    for (size_t i = 0; i < n; i++) {
        std::vector<size_t> chain;
        for (long p = (long)i; p >= 0 && !done[p]; p = items[p].parent) chain.push_back((size_t)p);
        for (size_t k = chain.size(); k-- > 0;) {
            size_t j = chain[k];
            LwTransform local = local_transform(items[j]);
            (*world)[j] = items[j].parent >= 0 ? compose((*world)[items[j].parent], local) : local;
            done[j] = 1;
        }
    }
}

std::string folder_of(const std::string &path)
{
    size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string base_name(const std::string &path)
{
    size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string stem(const std::string &path)
{
    std::string name = base_name(path);
    size_t dot = name.find_last_of('.');
    if (dot != std::string::npos && dot > 0) name = name.substr(0, dot);
    return name.empty() ? std::string("object") : name;
}

bool is_regular_file(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

/* Where an object file named in the scene is, or "". */
std::string find_object_file(const std::string &named, const std::string &scene_folder)
{
    std::string given = named;
    for (char &ch : given) {
        if (ch == '\\') ch = '/';
    }
    /* "C:/..." from a Windows scene: only the bare name can help. */
    bool drive = given.size() >= 2 && given[1] == ':';
    std::vector<std::string> tries;
    if (!drive) {
        tries.push_back(given);
        if (given[0] != '/') {
            tries.push_back(scene_folder + "/" + given);
            tries.push_back(folder_of(scene_folder) + "/" + given);
        }
    }
    tries.push_back(scene_folder + "/" + base_name(given));
    for (const std::string &t : tries) {
        if (is_regular_file(t)) return t;
    }
    return "";
}

struct LoadedFile {
    bool ok = false;
    LwModel model;
};

/* Reads the scene's object files, each once. */
bool load_object_files(const std::vector<SceneItem> &items, const std::string &scene_folder,
                       std::vector<const LoadedFile *> *files, std::map<std::string, std::unique_ptr<LoadedFile>> *cache,
                       LwResult *result)
{
    long bytes_read = 0;
    files->assign(items.size(), nullptr);
    for (size_t i = 0; i < items.size(); i++) {
        if (items[i].path.empty()) continue;
        auto found = cache->find(items[i].path);
        if (found == cache->end()) {
            std::unique_ptr<LoadedFile> loaded(new LoadedFile);
            std::string where = find_object_file(items[i].path, scene_folder);
            std::string bytes, error;
            if (where.empty()) {
                result->warnings.push_back("object file not found: " + items[i].path);
            } else if (!import_read_file(where.c_str(), lw_file_limit, &bytes, &error)) {
                result->warnings.push_back(where + ": " + error);
            } else if (!lw_parse_object((const uint8_t *)bytes.data(), bytes.size(), &loaded->model, &error)) {
                result->warnings.push_back(where + ": " + error);
            } else {
                loaded->ok = true;
            }
            bytes_read += (long)bytes.size();
            if (bytes_read > LW_MAX_SCENE_BYTES) {
                result->error = "the scene's object files come to more than " +
                                std::to_string((long)LW_MAX_SCENE_BYTES) + " bytes";
                return false;
            }
            found = cache->emplace(items[i].path, std::move(loaded)).first;
        }
        (*files)[i] = found->second.get();
    }
    return true;
}

/* The layer number LoadObjectLayer's 1-based layer means: the layer
 * numbered one less, else the layer at that place in the file. */
int layer_number(const LwModel &model, int layer)
{
    if (layer < 0) return -1;
    for (const LwLayer &l : model.layers) {
        if (l.number == layer - 1) return l.number;
    }
    if ((size_t)layer - 1 < model.layers.size()) return model.layers[layer - 1].number;
    return layer - 1;
}

} // namespace

void lw_read_scene(const char *text, size_t size, const char *scene_path, const char *name, LwResult *result)
{
    SceneReader r;
    split_lines(text, size, &r.lines);
    std::vector<std::string> first = split_words(r.lines.empty() ? "" : r.lines[0]);
    if (first.empty() || first[0] != "LWSC") {
        result->error = "not a LightWave scene (no LWSC header)";
        return;
    }
    for (r.at = 2; r.at < r.lines.size();) {
        const std::string &line = r.lines[r.at++];
        if (!read_line(&r, line)) {
            result->error = r.error;
            return;
        }
    }
    if (r.items.empty()) {
        result->error = "the scene loads no objects";
        return;
    }
    check_parents(&r.items, &result->warnings);
    std::vector<const LoadedFile *> files;
    std::map<std::string, std::unique_ptr<LoadedFile>> cache;
    if (!load_object_files(r.items, folder_of(scene_path), &files, &cache, result)) return;
    std::vector<LwTransform> world;
    world_transforms(r.items, &world);

    size_t n = r.items.size();
    std::vector<Object *> made(n, nullptr);
    std::vector<char> kept(n, 0);
    std::vector<LwColouring> colours;
    long placed = 0;
    for (size_t i = 0; i < n; i++) {
        if (!files[i] || !files[i]->ok) continue;
        const LwModel &model = files[i]->model;
        for (const LwLayer &l : model.layers) placed += (long)l.points.size() / 3;
        if (placed > LW_MAX_SCENE_POINTS) {
            for (size_t k = 0; k < i; k++) {
                if (made[k]) object_free(made[k]);
            }
            result->error = "the scene places more than " + std::to_string((long)LW_MAX_SCENE_POINTS) + " points";
            return;
        }
        made[i] = lw_build_model(model, stem(r.items[i].path).c_str(), world[i], layer_number(model, r.items[i].layer),
                                 &colours);
        if (!made[i]) {
            result->warnings.push_back(r.items[i].path + ": no polygons or lines (in the layer the scene loads)");
            continue;
        }
        lw_place_object(made[i], world[i], r.items[i].pivot);
        result->polygons += lw_count_surfaces(made[i], &result->objects);
        /* An item with polygons keeps its ancestors (nulls, missing files)
         * as groups that place it. */
        for (long p = (long)i; p >= 0 && !kept[p]; p = r.items[p].parent) kept[p] = 1;
    }
    Object *root = new_group();
    object_set_name(root, name);
    for (size_t i = 0; i < n; i++) {
        if (!kept[i] || made[i]) continue;
        made[i] = new_group();
        object_set_name(made[i], r.items[i].path.empty() ? r.items[i].name.c_str() : stem(r.items[i].path).c_str());
        lw_place_object(made[i], world[i], r.items[i].pivot);
    }
    for (size_t i = 0; i < n; i++) {
        if (!kept[i]) continue;
        long p = r.items[i].parent;
        object_add_child(p >= 0 && kept[p] ? made[p] : root, made[i]);
    }
    if (root->num_kids == 0) {
        object_free(root);
        result->error = "the scene places no object with polygons or lines";
        return;
    }
    lw_apply_colours(colours);
    result->root = root;
}
