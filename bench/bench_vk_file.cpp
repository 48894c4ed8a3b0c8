/*
 * bench_vk_file.cpp - times saving and loading model files of 100k and 1M
 * triangles (a grid mesh in one object, the way primitives leave it: its
 * centre at the middle, coordinates that are not round numbers).  Prints
 * seconds, MB/s and peak memory.  Each load runs in a fresh process so
 * that its peak memory is its own.  For comparison it times a parse floor
 * (read the file and convert every number, nothing else) and, when the
 * `assimp` tool is installed, assimp importing the same mesh as OBJ.
 *
 *   bench_vk_file [triangles...]        default: 100000 1000000
 *   bench_vk_file --load FILE           (used by the benchmark itself)
 *
 * With VESK_BENCH_PLAIN_MALLOC set in the environment the allocator runs
 * without its guard headers and accounting (memory_checks off), to show
 * what they cost.
 */
#include "vesk.h"
#include "bench_support.h"
#include "app/prefs.h"
#include "fileio/vk_file.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

static double peak_mb(void)
{
    struct rusage u;
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss / 1024.0;
}

static void start_core(void)
{
    prefs_set_defaults();
    if (getenv("VESK_BENCH_PLAIN_MALLOC")) prefs.memory_checks = 0;
    world = new_world();
    create_palette();
}

/* A grid of about `triangles` triangles in one object. */
static Object *make_grid(long triangles)
{
    long cols = 1000, rows = (triangles / 2 + cols - 1) / cols;
    Object *o = new_object(OBJECT_NORMAL);
    object_add_child(world, o);
    std::vector<float> xyz;
    xyz.reserve((size_t)(rows + 1) * (cols + 1) * 3);
    for (long r = 0; r <= rows; r++) {
        for (long c = 0; c <= cols; c++) {
            xyz.push_back(0.137f * (float)c);
            xyz.push_back(0.071f * (float)r);
            xyz.push_back(0.01f * (float)((r * 7 + c * 13) % 101));
        }
    }
    vk_object_add_vertices_from_float_array(o, xyz.data(), (unsigned)(xyz.size() / 3));
    std::vector<Vertex *> v;
    for (List *l = o->vertices; l; l = l->next) v.push_back((Vertex *)l->item);
    List *tail = nullptr;
    for (long r = 0; r < rows; r++) {
        for (long c = 0; c < cols; c++) {
            long a = r * (cols + 1) + c, b = a + cols + 1;
            long tri[2][3] = {{a, a + 1, b + 1}, {a, b + 1, b}};
            for (auto &t : tri) {
                Surface *s = new_surface();
                s->mat = (uint16_t)(2 + (r + c) % 10);
                List *rt = nullptr;
                for (long k : t) {
                    Vertex *x = v[(size_t)k];
                    rt = list_add_item_fast(&s->vertrefs, rt, new_svertex(x, x->point[0] * 0.01f, x->point[1] * 0.02f));
                    s->num_vertrefs++;
                }
                tail = list_add_item_fast(&o->surfaces, tail, s);
                o->num_surf++;
            }
        }
    }
    object_calculate_centre(o);
    return o;
}

static void write_obj(Object *o, const std::string &path)
{
    FILE *f = fopen(path.c_str(), "w");
    if (!f) return;
    uint32_t n = 0;
    for (List *l = o->vertices; l; l = l->next) {
        Vertex *v = (Vertex *)l->item;
        v->mark = ++n;
        fprintf(f, "v %.9g %.9g %.9g\n", v->point[0], v->point[1], v->point[2]);
    }
    for (List *l = o->surfaces; l; l = l->next) {
        fputs("f", f);
        for (List *r = ((Surface *)l->item)->vertrefs; r; r = r->next) {
            fprintf(f, " %u", ((SVertex *)r->item)->vertex->mark);
        }
        fputs("\n", f);
    }
    fclose(f);
}

/* Reads the whole file and converts every number in it. */
static double parse_floor(const std::string &path, long *numbers)
{
    double t0 = now();
    FILE *f = fopen(path.c_str(), "rb");
    if (!f) return 0;
    std::vector<char> text((size_t)(file_mb(path) * 1048576.0) + 1);
    size_t n = fread(text.data(), 1, text.size(), f);
    fclose(f);
    const char *p = text.data(), *end = p + n;
    double sum = 0;
    *numbers = 0;
    while (p < end) {
        while (p < end && (*p == ' ' || *p == '\n')) p++;
        const char *q = p;
        while (q < end && *q != ' ' && *q != '\n') q++;
        double d;
        if (std::from_chars(p, q, d).ptr == q) {
            sum += d;
            ++*numbers;
        }
        p = q;
    }
    double t = now() - t0;
    if (sum == 12345.678) printf("!");
    return t;
}

/* The child process: loads the file and reports time and peak memory. */
static int load_only(const char *path)
{
    start_core();
    double before = peak_mb();
    double t0 = now();
    FILE *quiet = freopen("/dev/null", "w", stdout);
    int ok = readfile_vk(path, world, 1);
    double t = now() - t0;
    (void)quiet;
    fprintf(stderr, "%d %.3f %.1f %.1f %u\n", ok, t, before, peak_mb(),
            world->kids ? ((Object *)world->kids->item)->num_surf : 0);
    return 0;
}

static void run_child_load(const std::string &self, const std::string &path, double mb)
{
    std::string cmd = "'" + self + "' --load '" + path + "' 2>&1 >/dev/null";
    FILE *p = popen(cmd.c_str(), "r");
    if (!p) return;
    int ok = 0;
    unsigned surfaces = 0;
    double t = 0, base = 0, peak = 0;
    if (fscanf(p, "%d %lf %lf %lf %u", &ok, &t, &base, &peak, &surfaces) == 5) {
        printf("  load (with normals, select)  %7.3f s  %7.1f MB/s  peak %6.1f MB (%.1f MB before loading)  %u "
               "surfaces%s\n",
               t, mb / t, peak, base, surfaces, ok ? "" : "  FAILED");
    }
    pclose(p);
}

static void time_assimp(const std::string &obj)
{
    if (system("command -v assimp >/dev/null 2>&1") != 0) {
        printf("  assimp: not installed (apt-get install assimp-utils)\n");
        return;
    }
    std::string cmd = "/usr/bin/time -f '%e %M' assimp info '" + obj + "' >/dev/null 2>/tmp/assimp_time.txt";
    double t0 = now();
    int rc = system(cmd.c_str());
    double t = now() - t0;
    FILE *f = fopen("/tmp/assimp_time.txt", "r");
    double secs = t, kb = 0;
    if (f) {
        char line[256];
        while (fgets(line, sizeof line, f)) sscanf(line, "%lf %lf", &secs, &kb);
        fclose(f);
    }
    printf("  assimp info (OBJ import)     %7.3f s  peak %6.1f MB%s\n", secs, kb / 1024.0, rc ? "  (failed)" : "");
}

static void bench(const std::string &self, long triangles)
{
    std::string dir = "/tmp/bench_vk_file";
    mkdir(dir.c_str(), 0755);
    std::string path = dir + "/grid_" + std::to_string(triangles) + ".vk";
    Object *o = make_grid(triangles);
    printf("%ld triangles, %u vertices, centre %g %g %g\n", (long)o->num_surf, o->num_vert, o->centre[0],
           o->centre[1], o->centre[2]);
    double t0 = now();
    int ok = write_vk(path.c_str());
    double t = now() - t0;
    double mb = file_mb(path);
    printf("  save                         %7.3f s  %7.1f MB/s  %.1f MB file%s\n", t, mb / t, mb, ok ? "" : "  FAILED");
    std::string obj = dir + "/grid_" + std::to_string(triangles) + ".obj";
    write_obj(o, obj);
    object_delete(o);
    run_child_load(self, path, mb);
    long numbers = 0;
    double floor = parse_floor(path, &numbers);
    printf("  parse floor (read + from_chars every number) %.3f s  %7.1f MB/s  %ld numbers\n", floor, mb / floor,
           numbers);
    time_assimp(obj);
}

int main(int argc, char **argv)
{
    if (argc == 3 && strcmp(argv[1], "--load") == 0) return load_only(argv[2]);
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return 1;
    self[n] = '\0';
    start_core();
    std::vector<long> sizes;
    for (int i = 1; i < argc; i++) sizes.push_back(atol(argv[i]));
    if (sizes.empty()) sizes = {100000, 1000000};
    for (long s : sizes) bench(self, s);
    return 0;
}
