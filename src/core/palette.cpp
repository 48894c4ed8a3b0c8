/*
 * palette.cpp - the one global palette of materials.  Entries are only
 * ever added (up to PALETTE_CAPACITY) and never reordered; surfaces hold
 * indices into it.  The one exception to adding: the entries a model
 * file added while it was read aside are dropped again when that file is
 * refused, since nothing can refer to them.  Every added entry is
 * announced to the user interface with "add_palette_button", every
 * dropped one with "remove_palette_buttons_from".
 */
#include "vesk.h"
#include "core/internal.h"

#include <cmath>
#include <cstring>

static Material palette[PALETTE_CAPACITY];
int num_palette = 0;

static const long standard_colours[15] = {
    0x000000, 0xffffff, 0xa04040, 0xff0000, 0xff7700, 0xffff00, 0x00ff00, 0x458674,
    0xa0c0e0, 0x0000ff, 0x82004b, 0xee80ee, 0x444444, 0x888888, 0xcccccc,
};

int vk_get_num_palette(void) { return num_palette; }

/* Indices from scripts and files are not trusted: anything outside the
 * table reads entry 0 rather than memory past it. */
static int clamp_index(int index)
{
    return (index >= 0 && index < PALETTE_CAPACITY) ? index : 0;
}

Material *index_to_material(int index) { return &palette[clamp_index(index)]; }
Material *vk_material_get(int index) { return index_to_material(index); }

long index_to_rgb(int index)
{
    const float *c = palette[clamp_index(index)].rgb;
    return rgb_floats_to_long(c[0], c[1], c[2]);
}

long vk_material_index_to_rgb(int index) { return index_to_rgb(index); }

void index_to_3f(int index, float *r, float *g, float *b)
{
    const float *c = palette[clamp_index(index)].rgb;
    *r = c[0];
    *g = c[1];
    *b = c[2];
}

char *index_to_string(int index)
{
    static char text[16];
    snprintf(text, sizeof text, "#%06lx", index_to_rgb(index) & 0xffffffL);
    return text;
}

static void set_colour4(float *dst, float r, float g, float b)
{
    dst[0] = r;
    dst[1] = g;
    dst[2] = b;
    dst[3] = 1.0f;
}

void init_palette_entry(int index, long colour)
{
    Material *m = &palette[clamp_index(index)];
    long_rgb_to_floatv(colour, m->rgb);
    set_colour4(m->ambient, 0.2f, 0.2f, 0.2f);
    set_colour4(m->specular, 0.5f, 0.5f, 0.5f);
    set_colour4(m->emissive, 0.0f, 0.0f, 0.0f);
    m->shininess = 10.0f;
    m->transparency = 0.0f;
}

static void announce_entry(int index)
{
    tcl_command("add_palette_button #%06lx %d", index_to_rgb(index) & 0xffffffL, index);
}

void create_palette(void)
{
    num_palette = 0;
    for (int i = 0; i < 15; i++) {
        init_palette_entry(num_palette, standard_colours[num_palette]);
        announce_entry(num_palette);
        num_palette++;
    }
}

/* The entry whose diffuse colour is nearest to rgb, used when the palette
 * is full. */
static int nearest_entry(const float *rgb)
{
    int best = 0;
    double best_d = HUGE_VAL;
    for (int i = 0; i < num_palette; i++) {
        double d = 0;
        for (int k = 0; k < 3; k++) d += (palette[i].rgb[k] - rgb[k]) * (double)(palette[i].rgb[k] - rgb[k]);
        if (d < best_d) {
            best_d = d;
            best = i;
        }
    }
    return best;
}

static int palette_is_full(void)
{
    if (num_palette < PALETTE_CAPACITY) return 0;
    console_printf("the palette is full (%d entries) - using the nearest colour\n", PALETTE_CAPACITY);
    return 1;
}

int rgb_to_index(long colour)
{
    float rgb[3];
    long_rgb_to_floats(colour, &rgb[0], &rgb[1], &rgb[2]);
    for (int i = 0; i < num_palette; i++) {
        const float *c = palette[i].rgb;
        if (c[0] == rgb[0] && c[1] == rgb[1] && c[2] == rgb[2]) return i;
    }
    if (palette_is_full()) return nearest_entry(rgb);
    init_palette_entry(num_palette, colour);
    announce_entry(num_palette);
    return num_palette++;
}

static int same_hundredths(float a, float b)
{
    double x = (double)a * 100.0, y = (double)b * 100.0;
    /* Compared as truncated integers; values outside the integer range
     * compare by the doubles themselves. */
    if (std::fabs(x) < 9.0e18 && std::fabs(y) < 9.0e18) return (long long)x == (long long)y;
    return x == y;
}

int material_compare(Material *a, Material *b)
{
    const float *ca[4] = {a->rgb, a->ambient, a->emissive, a->specular};
    const float *cb[4] = {b->rgb, b->ambient, b->emissive, b->specular};
    for (int c = 0; c < 4; c++) {
        for (int k = 0; k < 3; k++) {
            if (!same_hundredths(ca[c][k], cb[c][k])) return 0;
        }
    }
    if (a->transparency != b->transparency) return 0;
    if (a->shininess != b->shininess) return 0;
    return 1;
}

int find_material(Material *material)
{
    for (int i = 0; i < num_palette; i++) {
        if (material_compare(&palette[i], material)) return i;
    }
    return -1;
}

int append_material(Material *material)
{
    if (palette_is_full()) return nearest_entry(material->rgb);
    palette[num_palette] = *material;
    announce_entry(num_palette);
    return num_palette++;
}

void palette_truncate(int count)
{
    if (count < 0 || count >= num_palette) return;
    num_palette = count;
    tcl_command("remove_palette_buttons_from %d", count);
}

int material_get_index(Material *material)
{
    int i = find_material(material);
    return i >= 0 ? i : append_material(material);
}

int new_palette_entry(int index)
{
    if (index < 0 || index >= num_palette) {
        console_printf("new_palette_entry: no palette entry %d [palette is 0->%d]\n", index, num_palette - 1);
        return num_palette;
    }
    if (palette_is_full()) return num_palette;
    palette[num_palette] = palette[index];
    announce_entry(num_palette);
    return ++num_palette;
}

int set_palette_entry(int index, float r, float g, float b, float ar, float ag, float ab, float er,
                      float eg, float eb, float sr, float sg, float sb, float shininess,
                      float transparency)
{
    if (index < 0 || index >= num_palette) {
        console_printf("set_palette_entry: no palette entry %d [palette is 0->%d]\n", index, num_palette - 1);
        return 0;
    }
    Material *m = &palette[index];
    m->rgb[0] = r, m->rgb[1] = g, m->rgb[2] = b;
    m->ambient[0] = ar, m->ambient[1] = ag, m->ambient[2] = ab;
    m->emissive[0] = er, m->emissive[1] = eg, m->emissive[2] = eb;
    m->specular[0] = sr, m->specular[1] = sg, m->specular[2] = sb;
    m->shininess = shininess;
    m->transparency = transparency;
    return 1;
}

int edit_palette_entry(int index)
{
    if (index < 0 || index >= num_palette) {
        console_printf("edit_palette_entry: no palette entry %d [palette is 0->%d]\n", index, num_palette - 1);
        return 0;
    }
    Material *m = &palette[index];
    tcl_command("edit_colour_ui %d %f %f %f   %f %f %f   %f %f %f   %f %f %f   %f %f", index,
                m->rgb[0], m->rgb[1], m->rgb[2], m->ambient[0], m->ambient[1], m->ambient[2],
                m->emissive[0], m->emissive[1], m->emissive[2], m->specular[0], m->specular[1],
                m->specular[2], m->shininess, m->transparency);
    return 1;
}

Material *new_material(void)
{
    Material *m = (Material *)myalloc(sizeof(Material));
    if (!m) console_printf("can't alloc material\n");
    return m;
}

Material *new_material_copy(Material *material)
{
    Material *m = new_material();
    if (m) *m = *material;
    return m;
}

Material *material_add(Material *dst, Material *src)
{
    float *d[4] = {dst->rgb, dst->ambient, dst->specular, dst->emissive};
    const float *s[4] = {src->rgb, src->ambient, src->specular, src->emissive};
    for (int c = 0; c < 4; c++) {
        /* Green takes the source's blue, as sums have always been formed. */
        d[c][0] += s[c][0];
        d[c][1] += s[c][2];
        d[c][2] += s[c][2];
    }
    dst->shininess += src->shininess;
    dst->transparency += src->transparency;
    return dst;
}

Material *material_divide(Material *material, int n)
{
    float f = (float)n;
    float *c[4] = {material->rgb, material->ambient, material->specular, material->emissive};
    for (int k = 0; k < 4; k++) {
        for (int i = 0; i < 3; i++) c[k][i] /= f;
    }
    material->shininess /= f;
    material->transparency /= f;
    return material;
}

void print_material(Material *m)
{
    console_printf("MATERIAL \"%s\" rgb %g %g %g  amb %g %g %g  emis %g %g %g  spec %g %g %g  shi %g  "
                   "trans %g\n",
                   "", m->rgb[0], m->rgb[1], m->rgb[2], m->ambient[0], m->ambient[1], m->ambient[2],
                   m->emissive[0], m->emissive[1], m->emissive[2], m->specular[0], m->specular[1],
                   m->specular[2], m->shininess, m->transparency);
}
