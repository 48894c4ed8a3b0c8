/*
 * app/prefs.cpp - loading, saving and looking up the preference settings.
 * The file is a magic line "VKPR <version>" followed by one
 * "name value" line per setting, in table order.
 */
#include "app/tcl_bridge.h"
#include "app/prefs.h"
#include "app/frontend.h"
#include "core/internal.h"
#include "fileio/tokens.h"
#include "platform/safe_file.h"

#include <tcl.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

static const int PREFS_VERSION = 12;
static const int PREFS_LINE_MAX = 255;

/* The shipped render command: the backslashes of the Windows path were
 * lost and one of them became a backspace (code 8).  Users correct it in
 * the preferences dialog; the default is kept byte for byte. */
static const char render_command_default[] =
    "vesk write_POV veskpovfile.pov ; vesk execute {\"C:Program FilesPOV-Ray for Windows\b"
    "inpvengine.exe\"  /RENDER veskpovfile.pov }";

static const char *const pref_type_names[] = {"PREF_INT",    "PREF_DOUBLE", "PREF_HEX",
                                              "PREF_STRING", "PREF_KEY",    "PREF_BOOLEAN"};

static const struct {
    const char *name;
    char code;
} key_names[] = {{"Up", 0}, {"Down", 0}, {"Left", 0}, {"Right", 0}, {"Space", 32}};

void prefs_set_string(char **slot, const char *text)
{
    size_t n = strlen(text) + 1;
    char *copy = Tcl_Alloc((unsigned int)n);
    memcpy(copy, text, n);
    if (*slot) Tcl_Free(*slot);
    *slot = copy;
}

void prefs_set_defaults(void)
{
    /* Keep the live string pointers out of the struct copy so that they
     * can be freed rather than overwritten. */
    char **strings[] = {&prefs.font_main,     &prefs.font_menu,     &prefs.render_command,
                        &prefs.fontpath,      &prefs.XYwindowlabel, &prefs.ZYwindowlabel,
                        &prefs.XZwindowlabel, &prefs.XYZwindowlabel, &prefs.pov_file_header,
                        &prefs.plugin_dir};
    for (char **s : strings) {
        if (*s) Tcl_Free(*s);
    }
    prefs = prefs_defaults;
    prefs_set_string(&prefs.render_command, render_command_default);
    prefs_set_string(&prefs.font_main, "{arial} 9 {bold}");
    prefs_set_string(&prefs.font_menu, "{arial} 9 {bold italic}");
    prefs_set_string(&prefs.fontpath, "font.vk");
    prefs_set_string(&prefs.pov_file_header, "");
    prefs_set_string(&prefs.plugin_dir, "$VESK_HOME/plugins");
    prefs_set_string(&prefs.XYwindowlabel, "Front (XY)");
    prefs_set_string(&prefs.ZYwindowlabel, "Side (ZY) ");
    prefs_set_string(&prefs.XZwindowlabel, "Plan (XZ)");
    prefs_set_string(&prefs.XYZwindowlabel, "3D (XYZ)");
}

const char *prefs_get_prefs_filename(void)
{
    static char path[4096];
    const char *dir = getenv("USERPROFILE");
    if (!dir || !*dir) dir = getenv("HOME");
    if (dir && *dir) {
        snprintf(path, sizeof path, "%s/%s", dir, "veskprefs.txt");
    } else {
        snprintf(path, sizeof path, "%s", "veskprefs.txt");
    }
    return path;
}

char prefs_key_from_name(const char *name)
{
    if (strlen(name) == 1) return name[0];
    for (const auto &k : key_names) {
        if (strcmp(k.name, name) == 0) return k.code;
    }
    return 0;
}

const char *prefs_key_to_name(char key)
{
    static char single[2];
    for (const auto &k : key_names) {
        if (k.code == key) return k.name;
    }
    single[0] = key;
    single[1] = '\0';
    return single;
}

/* The standard text-to-number conversion, truncated toward zero and kept
 * inside the int range so that huge or NaN values cannot misbehave. */
static int text_to_int(const char *text)
{
    double d = strtod(text, nullptr);
    if (std::isnan(d)) return 0;
    if (d >= (double)INT_MAX) return INT_MAX;
    if (d <= (double)INT_MIN) return INT_MIN;
    return (int)d;
}

static void set_hex(int *slot, const char *text)
{
    /* The file always carries the 0x prefix; a value without it is left
     * alone. */
    if (text[0] != '0' || text[1] != 'x') return;
    char *end;
    unsigned long long v = strtoull(text + 2, &end, 16);
    if (end == text + 2) return;
    *slot = (int)(uint32_t)v;
}

static void set_pref_value(PrefSpec *spec, const char *value)
{
    switch (spec->type) {
    case PREF_DOUBLE: {
        /* Written as 8 bytes even for draw_moving_vertices (see prefs.h). */
        double d = strtod(value, nullptr);
        memcpy(spec->address, &d, sizeof d);
        break;
    }
    case PREF_INT:
        *(int *)spec->address = text_to_int(value);
        break;
    case PREF_HEX:
        set_hex((int *)spec->address, value);
        break;
    case PREF_STRING:
        prefs_set_string((char **)spec->address, value);
        break;
    case PREF_KEY:
        *(char *)spec->address = prefs_key_from_name(value);
        break;
    case PREF_BOOLEAN:
        if (strcmp(value, "TRUE") == 0) {
            *(int *)spec->address = 1;
        } else if (strcmp(value, "FALSE") == 0) {
            *(int *)spec->address = 0;
        } else {
            *(int *)spec->address = text_to_int(value);
        }
        break;
    }
}

/* Checks the magic line; returns 1 when the body may be read. */
static int prefs_header_ok(FILE *f, const char *path)
{
    char line[PREFS_LINE_MAX];
    if (!fgets(line, sizeof line, f)) line[0] = '\0';
    TokenLine *tl = (TokenLine *)malloc(sizeof(TokenLine));
    get_tokens(line, tl);
    const char *magic = tl->count > 0 ? tl->token[0] : "";
    int version = tl->count > 1 ? text_to_int(tl->token[1]) : 0;
    int ok = 0;
    if (strcmp(magic, "VESP") == 0) {
        windows_message_dialog(
            "'%s' is a prefs file from an old version of VESK.\nsave-settings to replace it.\n.", path);
    } else if (strcmp(magic, "VKPR") != 0) {
        windows_message_dialog("'%s' is not a valid VESK prefs file.", path);
    } else if (version < PREFS_VERSION) {
        windows_message_dialog(
            "The prefs file is from an older version of VESK.\nsave-settings to replace it.\n.");
    } else {
        ok = 1;
    }
    free(tl);
    return ok;
}

/* Reads the name-value lines; returns 0 when a malformed line ended the
 * load early. */
static int prefs_read_body(FILE *f)
{
    char line[PREFS_LINE_MAX];
    TokenLine *tl = (TokenLine *)malloc(sizeof(TokenLine));
    int line_number = 2;
    int ok = 1;
    while (fgets(line, sizeof line, f)) {
        if (line[0] == '\n' || line[0] == '#') continue;
        get_tokens(line, tl);
        if (tl->count != 2) {
            console_printf("error reading prefs file (line %d) - expected token value pair - "
                           "actually found %d items '%s'\n",
                           line_number, tl->count, line);
            ok = 0;
            break;
        }
        debugf("%d '%s' '%s'\n", line_number, tl->token[0], tl->token[1]);
        PrefSpec *spec = vk_prefs_get_spec(tl->token[0]);
        if (!spec) {
            console_printf("unknown prefs token '%s' in prefs file (line %d) - ignored\n",
                           tl->token[0], line_number);
        } else {
            set_pref_value(spec, tl->token[1]);
        }
        line_number++;
    }
    free(tl);
    return ok;
}

void prefs_load_file(const char *path)
{
    FILE *f = fopen(path, "r");
    if (!f) {
        console_printf("no preferences file found \"%s\"\n - using default setup. That's OK, one "
                       "will be created when settings are saved.\n",
                       path);
        return;
    }
    if (prefs_header_ok(f, path) && prefs_read_body(f)) {
        console_printf("prefs file %s loaded OK.\n", path);
    }
    fclose(f);
}

void init_prefs(void)
{
    prefs_set_defaults();
    prefs_load_file(prefs_get_prefs_filename());
}

/* Copies the live geometry of the windows into the stored settings.  A
 * front end without windows keeps the stored values. */
static void refresh_window_geometry(void)
{
    struct {
        int view;
        int *x, *y, *width, *height;
    } windows[] = {
        {2, &prefs.planwin_x, &prefs.planwin_y, &prefs.planwin_width, &prefs.planwin_height},
        {1, &prefs.sidewin_x, &prefs.sidewin_y, &prefs.sidewin_width, &prefs.sidewin_height},
        {0, &prefs.frontwin_x, &prefs.frontwin_y, &prefs.frontwin_width, &prefs.frontwin_height},
        {3, &prefs.win3d_x, &prefs.win3d_y, &prefs.win3d_width, &prefs.win3d_height},
        {4, &prefs.cpwin_x, &prefs.cpwin_y, &prefs.cpwin_width, &prefs.cpwin_height},
    };
    for (const auto &w : windows) {
        int rect[4];
        if (!frontend_window_geometry(w.view, rect)) continue;
        *w.x = rect[0];
        *w.y = rect[1];
        *w.width = rect[2];
        *w.height = rect[3];
    }
}

static void write_pref_string(FILE *f, const char *s)
{
    fputc('"', f);
    for (; s && *s; s++) {
        if (*s == '"') fputc('\\', f);
        fputc(*s, f);
    }
    fputc('"', f);
}

static void write_pref_value(FILE *f, const PrefSpec *spec)
{
    switch (spec->type) {
    case PREF_INT:
        fprintf(f, "%d", *(int *)spec->address);
        break;
    case PREF_BOOLEAN:
        fputs(*(int *)spec->address ? "TRUE" : "FALSE", f);
        break;
    case PREF_DOUBLE: {
        double d;
        memcpy(&d, spec->address, sizeof d);
        fprintf(f, "%f", d);
        break;
    }
    case PREF_HEX:
        fprintf(f, "0x%X", *(unsigned int *)spec->address);
        break;
    case PREF_STRING:
        write_pref_string(f, *(char **)spec->address);
        break;
    case PREF_KEY:
        fputs(prefs_key_to_name(*(char *)spec->address), f);
        break;
    }
}

int save_prefs(void)
{
    const char *path = prefs_get_prefs_filename();
    refresh_window_geometry();
    SafeFile sf;
    FILE *f = safe_file_open(&sf, path);
    if (!f) {
        windows_message_dialog("can't open preferences file '%s' for writing (%s) - settings not saved\n",
                               path, strerror(errno));
        command_result_set("0");
        return 0;
    }
    fprintf(f, "VKPR %d\n", PREFS_VERSION);
    for (int i = 0; i < num_prefs; i++) {
        fprintf(f, "%s ", prefs_table[i].name);
        write_pref_value(f, &prefs_table[i]);
        fputc('\n', f);
    }
    if (!safe_file_commit(&sf)) {
        windows_message_dialog("can't write preferences file '%s' (%s) - settings not saved\n",
                               path, strerror(errno));
        command_result_set("0");
        return 0;
    }
    windows_info_dialog("Settings have been saved to %s", path);
    command_result_set("1");
    return 1;
}

PrefSpec *vk_prefs_get_spec(const char *name)
{
    if (!name) return nullptr;
    for (int i = 0; i < num_prefs; i++) {
        if (strcmp(prefs_table[i].name, name) == 0) return &prefs_table[i];
    }
    return nullptr;
}

int vk_prefs_list(void)
{
    int steps = 0;
    /* Every second entry, as the listing has always done. */
    for (int i = 0; i < num_prefs; i += 2, steps++) {
        console_printf("%s \t %s\n", prefs_table[i].name, pref_type_names[prefs_table[i].type]);
    }
    return steps;
}

/* Looks a setting up for a typed getter; prints the getter's message on
 * standard error and returns null when it is missing or of another type. */
static PrefSpec *typed_spec(const char *name, int type, const char *not_found,
                            const char *wrong_type)
{
    PrefSpec *spec = vk_prefs_get_spec(name);
    if (!spec) {
        fprintf(stderr, not_found, name ? name : "(null)");
        return nullptr;
    }
    if (spec->type != type) {
        fprintf(stderr, wrong_type, name, spec->type);
        return nullptr;
    }
    return spec;
}

int vk_prefs_get_int(const char *name)
{
    PrefSpec *s = typed_spec(name, PREF_INT, "vk_prefs_get_int: %s not found in preferences\n",
                             "vk_prefs_get_int: pref %s is not type 'int' (actually type %d)\n");
    return s ? *(int *)s->address : -1;
}

int vk_prefs_get_boolean(const char *name)
{
    PrefSpec *s =
        typed_spec(name, PREF_BOOLEAN, "vk_prefs_get_boolean: %s not found in preferences\n",
                   "vk_prefs_get_boolean: pref %s is not type 'boolean' (is type number %d)\n");
    return s ? (*(int *)s->address != 0) : -1;
}

double vk_prefs_get_double(const char *name)
{
    PrefSpec *s =
        typed_spec(name, PREF_DOUBLE, "vk_prefs_get_double: %s not found in preferences\n",
                   "vk_prefs_get_double: pref %s is not type 'double' (is type number %d)\n");
    if (!s) return -1.0;
    double d;
    memcpy(&d, s->address, sizeof d);
    return d;
}

int vk_prefs_get_hex(const char *name)
{
    PrefSpec *s = typed_spec(name, PREF_HEX, "vk_prefs_get_hex: %s not found in preferences\n",
                             "vk_prefs_get_hex: pref %s is not type 'hex' (actually type %d)\n");
    return s ? *(int *)s->address : -1;
}

char *vk_prefs_get_string(const char *name)
{
    PrefSpec *s =
        typed_spec(name, PREF_STRING, "vk_prefs_get_string: %s not found in preferences\n",
                   "vk_prefs_get_string: pref %s is not type 'string' (actually type %d)\n");
    return s ? *(char **)s->address : nullptr;
}

const char *vk_prefs_get_key(const char *name)
{
    /* A missing key is reported in the string getter's words. */
    PrefSpec *s = typed_spec(name, PREF_KEY, "vk_prefs_get_string: %s not found in preferences\n",
                             "vk_prefs_get_key: pref %s is not type 'key' (actually type %d)\n");
    return s ? prefs_key_to_name(*(char *)s->address) : nullptr;
}
