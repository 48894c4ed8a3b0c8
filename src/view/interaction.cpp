/*
 * view/interaction.cpp - mouse and keys in the orthographic views: rubber
 * band, click and brush selection, the 3D cursor (Alt), axis-locked drags
 * (Control inside the selection box), moving, resizing by a handle,
 * rotating and extruding the selection, drawing lines and primitives,
 * drag-zoom, panning and the key preferences.  Rubber bands are kept in
 * the views' overlays and drawn inverted by each redraw.
 */
#include "view/interaction.h"
#include "app/frontend.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/tcl_bridge.h"
#include "core/internal.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/interaction_actions.h"
#include "view/overlay.h"
#include "view/draw_modes.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <cmath>
#include <cstdlib>
#include <string>

enum { BOX_MARGIN = 13, BRUSH_SIZE = 16 };

int interaction_mode = 0;
int move_submode = MODE_MOVE;
int keep_draw_tool = 0;

/* The state of one gesture. */
static struct {
    int button_down, button, view;
    int set_cursor, brush, ctrl_in_box, axis_lock, shift, add, remove;
    int mode_at_down, handle;
    float down[3], current[3];
    int down_x, down_y, zoom_y;
    float box_max[3], box_min[3];      /* the selection box at the press */
    float new_max[3], new_min[3];      /* the dragged box of a resize */
    float rotate_degrees, rotate_centre[3];
    /* line drawing */
    Object *line_object;
    Surface *line_surface;
    Vertex *last_vertex;
} g;

static const int view_axes[3][2] = {{0, 1}, {2, 1}, {0, 2}};

/* A number typed during a transform drag (see typed_key). */
static char typed[32];
static int typed_len = 0;

/* ---- the line under construction ---- */

static int object_in_tree(const Object *tree, const Object *o)
{
    if (tree == o) return 1;
    for (List *k = tree->kids; k; k = k->next) {
        if (object_in_tree((const Object *)k->item, o)) return 1;
    }
    return 0;
}

static void clear_line_bands(void)
{
    for (int v = 0; v < 3; v++) {
        if (!overlays[v].line) continue;
        overlays[v].line = 0;
        request_redisplay(v);
    }
}

/* A delete, an undo or a new model since the last click may have removed
 * the line's object, its surface or its last vertex.  The kept pointers
 * are only compared with the model's, never followed, until found there:
 * a line that is gone is forgotten, a lost last vertex is replaced by the
 * surface's last one. */
static void check_line_object(void)
{
    if (!g.line_object) return;
    if (!world || !object_in_tree(world, g.line_object) ||
        list_index(g.line_object->surfaces, g.line_surface) == LIST_NOT_FOUND) {
        g.line_object = nullptr;
        g.line_surface = nullptr;
        g.last_vertex = nullptr;
        clear_line_bands();
        return;
    }
    if (list_index(g.line_object->vertices, g.last_vertex) == LIST_NOT_FOUND) {
        SVertex *last = (SVertex *)list_last_item(g.line_surface->vertrefs);
        g.last_vertex = last ? last->vertex : nullptr;
    }
}

/* Ends the line under construction: its object gets the undo record and
 * becomes the selection. */
static void close_line_object(void)
{
    check_line_object();
    Object *o = g.line_object;
    g.line_object = nullptr;
    g.line_surface = nullptr;
    g.last_vertex = nullptr;
    clear_line_bands();
    if (!o) return;
    new_undo(UNDO_ADD_OBJECT, "new object");
    set_undo_object(o);
    object_calc_normals(o);
    clear_selection();
    select_object(o);
}

/* ---- modes ---- */

static const char *const draw_mode_names[DRAW_MODE_COUNT] = {
    "select", "line", "closed line", "polygon", "rectangle", "ellipse", "disk",
    "box", "sphere", "cylinder", "mesh", "grid", "icosahedron", "light"};

const char *draw_mode_name(int mode)
{
    if (mode >= 0 && mode < DRAW_MODE_COUNT) return draw_mode_names[mode];
    if (mode == MODE_ZOOM) return "zoom";
    return "select";
}

void publish_draw_modes(void)
{
    std::string list;
    for (int mode = 0; mode < DRAW_MODE_COUNT; mode++) {
        std::string label = draw_mode_names[mode];
        label[0] = (char)toupper((unsigned char)label[0]);
        list += std::to_string(mode) + " {" + label + "} ";
    }
    tcl_set_string("vesk_draw_modes", list.c_str());
}

static const char *drag_mode_name(int submode)
{
    static const char *const names[] = {"move", "resize", "rotate", "extrude"};
    if (submode >= MODE_MOVE && submode <= MODE_EXTRUDE) return names[submode - MODE_MOVE];
    return "move";
}

static void set_mode(int mode)
{
    interaction_mode = mode;
    tcl_set_string("draw_mode_name", draw_mode_name(mode < MODE_MOVE ? mode : 0));
}

/* How to go on with the chosen draw tool, on the status line. */
static void show_drawing_hint(void)
{
    int mode = interaction_mode;
    if (draw_mode_adds_points(mode)) {
        display_message("%s: click to add points; click the first point or press the right button to finish; "
                        "Escape cancels",
                        draw_mode_name(mode));
    } else if (draw_mode_drags_shape(mode)) {
        display_message("%s: drag to draw one, or click for a regular one; Escape goes back to Select",
                        draw_mode_name(mode));
    } else if (mode == DRAW_LIGHT) {
        display_message("light: click where the light goes; Escape goes back to Select");
    }
}

int cancel_drawing(void)
{
    check_line_object();
    if (g.line_object) {
        Object *o = g.line_object;
        g.line_object = nullptr;
        g.line_surface = nullptr;
        g.last_vertex = nullptr;
        clear_line_bands();
        /* The line was never recorded for undo: it goes as if never drawn. */
        object_delete(o);
        selection_forget_dead();
        find_bounding_box();
        selection_publish_counts();
        redraw_all();
        display_message("%s cancelled", draw_mode_name(interaction_mode));
        return 1;
    }
    if (draw_mode_is_tool(interaction_mode) && !g.button_down) {
        set_mode(DRAW_SELECT);
        display_message("back to Select");
        display_status();
        return 1;
    }
    return 0;
}

int set_new_draw_mode(int mode)
{
    if ((mode < 0 || mode >= DRAW_MODE_COUNT) && mode != MODE_ZOOM) {
        display_message("unknown draw mode %d", mode);
        return 0;
    }
    /* Another mode ends a line being drawn: it is kept with its undo
     * record instead of being continued later in some other mode. */
    if (mode != interaction_mode && g.line_object) {
        close_line_object();
        redraw_all();
    }
    set_mode(mode);
    show_drawing_hint();
    return 1;
}

int set_new_move_mode(int submode)
{
    if (submode < MODE_MOVE || submode > MODE_EXTRUDE) {
        display_message("unknown drag mode %d", submode);
        return 0;
    }
    move_submode = submode;
    tcl_set_string("drag_mode_name", drag_mode_name(submode));
    return 1;
}

/* ---- geometry of the selection box on screen ---- */

struct ScreenBox {
    int left, top, right, bottom;
};

static ScreenBox screen_box(int view)
{
    int x1, y1, x2, y2;
    point2xy(selection.box_min, &x1, &y1, view);
    point2xy(selection.box_max, &x2, &y2, view);
    ScreenBox b;
    b.left = (x1 < x2 ? x1 : x2) - BOX_MARGIN;
    b.right = (x1 > x2 ? x1 : x2) + BOX_MARGIN;
    b.top = (y1 < y2 ? y1 : y2) - BOX_MARGIN;
    b.bottom = (y1 > y2 ? y1 : y2) + BOX_MARGIN;
    return b;
}

static int inside_box(int view, int x, int y)
{
    if (nothing_is_selected()) return 0;
    ScreenBox b = screen_box(view);
    return x >= b.left && x <= b.right && y >= b.top && y <= b.bottom;
}

/* The handle under (x, y): the handle bits, or 0. */
static int handle_at(int view, int x, int y)
{
    if (nothing_is_selected() || !views[view].handles) return 0;
    ScreenBox b = screen_box(view);
    int hs = pixel_size(prefs.handle_size);
    int mx = (b.left + b.right) / 2 - hs / 2, my = (b.top + b.bottom) / 2 - hs / 2;
    const struct {
        int x, y, code;
    } squares[8] = {{b.left, b.top, HANDLE_TOP | HANDLE_LEFT},
                    {b.left, b.bottom - hs, HANDLE_BOTTOM | HANDLE_LEFT},
                    {b.right - hs, b.bottom - hs, HANDLE_BOTTOM | HANDLE_RIGHT},
                    {b.right - hs, b.top, HANDLE_TOP | HANDLE_RIGHT},
                    {mx, b.top, HANDLE_TOP | HANDLE_SIDE},
                    {mx, b.bottom - hs, HANDLE_BOTTOM | HANDLE_SIDE},
                    {b.left, my, HANDLE_LEFT | HANDLE_SIDE},
                    {b.right - hs, my, HANDLE_RIGHT | HANDLE_SIDE}};
    for (const auto &s : squares) {
        if (x >= s.x && x < s.x + hs && y >= s.y && y < s.y + hs) return s.code;
    }
    return 0;
}

void win_set_handle_cursor(int view, int handle)
{
    const char *cursor = "";
    switch (handle) {
    case HANDLE_TOP | HANDLE_LEFT: cursor = "top_left_corner"; break;
    case HANDLE_BOTTOM | HANDLE_LEFT: cursor = "bottom_left_corner"; break;
    case HANDLE_TOP | HANDLE_RIGHT: cursor = "top_right_corner"; break;
    case HANDLE_BOTTOM | HANDLE_RIGHT: cursor = "bottom_right_corner"; break;
    case HANDLE_SIDE | HANDLE_TOP: cursor = "top_side"; break;
    case HANDLE_SIDE | HANDLE_BOTTOM: cursor = "bottom_side"; break;
    case HANDLE_SIDE | HANDLE_LEFT: cursor = "left_side"; break;
    case HANDLE_SIDE | HANDLE_RIGHT: cursor = "right_side"; break;
    default: break;
    }
    frontend_set_cursor(view, cursor);
}

/* The selection box dragged by a handle to point p. */
void resize_bounding_box(const float *p, int view, int control, int handle)
{
    (void)control;
    int h = view_axes[view][0], v = view_axes[view][1];
    for (int i = 0; i < 3; i++) {
        g.new_max[i] = g.box_max[i];
        g.new_min[i] = g.box_min[i];
    }
    /* The window's top is the larger y in the front and side views and the
     * smaller z in the plan view, where z grows downwards. */
    int top_is_max = view != 2;
    if (handle & HANDLE_LEFT) g.new_min[h] = p[h];
    if (handle & HANDLE_RIGHT) g.new_max[h] = p[h];
    if (handle & HANDLE_TOP) (top_is_max ? g.new_max[v] : g.new_min[v]) = p[v];
    if (handle & HANDLE_BOTTOM) (top_is_max ? g.new_min[v] : g.new_max[v]) = p[v];
    for (int i = 0; i < 3; i++) {
        if (g.new_min[i] > g.new_max[i]) {
            float t = g.new_min[i];
            g.new_min[i] = g.new_max[i];
            g.new_max[i] = t;
        }
    }
}

/* ---- depth of shapes drawn in one view ---- */

/* The depth range of a box or sphere drawn in a view: the selection's
 * depth when something is selected, else as deep as the larger in-view
 * extent, centred on the 3D cursor's depth. */
void set_av_depth_box(int view, const float *a, const float *b, float *min_depth, float *max_depth)
{
    static const int depth_axis[3] = {2, 0, 1};
    int d = depth_axis[view], h = view_axes[view][0], v = view_axes[view][1];
    if (!nothing_is_selected() && selection.box_max[d] > selection.box_min[d]) {
        *min_depth = selection.box_min[d];
        *max_depth = selection.box_max[d];
        return;
    }
    float extent = std::fabs(a[h] - b[h]);
    if (std::fabs(a[v] - b[v]) > extent) extent = std::fabs(a[v] - b[v]);
    *min_depth = cursor_3d[d] - extent * 0.5f;
    *max_depth = cursor_3d[d] + extent * 0.5f;
}

/* ---- overlays ---- */

static void band_rect(int view, int x0, int y0, int x1, int y1, int shape)
{
    Overlay &o = overlays[view];
    o.shape = shape;
    o.x0 = x0;
    o.y0 = y0;
    o.x1 = x1;
    o.y1 = y1;
    request_redisplay(view);
}

static void band_line(int view, int x0, int y0, int x1, int y1)
{
    Overlay &o = overlays[view];
    o.line = 1;
    o.lx0 = x0;
    o.ly0 = y0;
    o.lx1 = x1;
    o.ly1 = y1;
    request_redisplay(view);
}

static void band_box(int view, const float *mn, const float *mx, float angle, const float *centre)
{
    Overlay &o = overlays[view];
    o.box = 1;
    for (int i = 0; i < 3; i++) {
        o.box_min[i] = mn[i];
        o.box_max[i] = mx[i];
        o.box_centre[i] = centre ? centre[i] : 0.0f;
    }
    o.box_angle = angle;
    request_redisplay(view);
}

/* ---- mouse down ---- */

static void start_selection_drag(int view, int button)
{
    int handle = handle_at(view, g.down_x, g.down_y);
    if (move_submode != MODE_EXTRUDE && handle) {
        g.handle = handle;
        set_mode(MODE_RESIZE);
    } else if (g.shift) {
        return; /* a Shift click in the box stays a selection gesture */
    } else if (move_submode != MODE_MOVE) {
        set_mode(move_submode);
    } else {
        set_mode(button == 1 ? MODE_MOVE : button == 2 ? MODE_RESIZE : MODE_ROTATE);
        if (interaction_mode == MODE_RESIZE && !g.handle) g.handle = HANDLE_BOTTOM | HANDLE_RIGHT;
    }
    for (int i = 0; i < 3; i++) {
        g.box_max[i] = selection.box_max[i];
        g.box_min[i] = selection.box_min[i];
    }
    band_box(view, g.box_min, g.box_max, 0.0f, nullptr);
}

void handle_mouse_down(int view, int x, int y, int button, int state)
{
    if (view < 0 || view > 2 || g.button_down) return;
    g.button_down = 1;
    typed_len = 0;
    typed[0] = 0;
    g.button = button;
    g.view = view;
    g.mode_at_down = interaction_mode;
    int shift = state & QUALIFIER_SHIFT, control = state & QUALIFIER_CONTROL, alt = state & QUALIFIER_ALT;
    g.brush = control && shift;
    g.ctrl_in_box = control && !shift && inside_box(view, x, y);
    g.axis_lock = 0;
    g.set_cursor = alt && !control && !shift;
    g.down_x = x;
    g.down_y = y;
    g.zoom_y = y;
    mouse_to_point(x, y, view, g.down);
    for (int i = 0; i < 3; i++) g.current[i] = g.down[i];
    if (g.set_cursor) {
        snap_to_grid(g.down);
        for (int i = 0; i < 3; i++) cursor_3d[i] = g.down[i];
        redisplay_orth();
        show_coors(cursor_3d);
        return;
    }
    g.add = g.remove = 0;
    g.shift = shift != 0;
    if (shift) {
        if (button == 1) g.add = 1;
        else g.remove = 1;
    }
    g.handle = 0;
    if (g.brush) return;
    if (interaction_mode == DRAW_SELECT && inside_box(view, x, y)) {
        start_selection_drag(view, button);
    } else if (interaction_mode == DRAW_SELECT) {
        band_rect(view, x, y, x, y, OVERLAY_RECT);
    }
    if (interaction_mode != DRAW_SELECT) snap_to_grid(g.down);
    if (interaction_mode == DRAW_RECTANGLE || interaction_mode == DRAW_BOX || interaction_mode == DRAW_SPHERE ||
        interaction_mode == DRAW_ICOSAHEDRON) {
        band_rect(view, x, y, x, y, OVERLAY_RECT);
    }
    if (interaction_mode == DRAW_ELLIPSE) band_rect(view, x, y, x, y, OVERLAY_ELLIPSE);
}

/* ---- mouse move ---- */

static void apply_axis_lock(int *x, int *y)
{
    if (!g.ctrl_in_box || !g.button_down) return;
    if (!g.axis_lock) {
        int dx = abs(*x - g.down_x), dy = abs(*y - g.down_y);
        if (dx > dy) g.axis_lock = 1;
        else if (dy > dx) g.axis_lock = 2;
    }
    if (g.axis_lock == 1) *y = g.down_y;
    if (g.axis_lock == 2) *x = g.down_x;
}

static void hover_readout(int view, int x, int y, const float *p)
{
    if (draw_mode_adds_points(interaction_mode)) return;
    if (nothing_is_selected()) {
        show_coors(p);
        return;
    }
    if (prefs.pov_active_pointer) win_set_handle_cursor(view, handle_at(view, x, y));
    if (selection.num_selected_vertices == 2) {
        const float *a = ((Vertex *)selection.selected_vertices->item)->point;
        const float *b = ((Vertex *)selection.selected_vertices->next->item)->point;
        show_coors_and_len(p, a, b);
    } else if (selection.num_selected_vertices == 1) {
        show_coors_and_point(p, ((Vertex *)selection.selected_vertices->item)->point);
    } else {
        show_coors_and_bb(p, selection.box_min);
    }
}

static float rotate_angle_for(int x)
{
    int step = prefs.mouse_rotate_degs > 0 ? prefs.mouse_rotate_degs : 1;
    int distance = x - g.down_x;
    return (float)((distance / step) * step);
}

/* The dragged box of a resize at the current point. */
static void update_resize(int view)
{
    resize_bounding_box(g.current, view, g.ctrl_in_box, g.handle ? g.handle : (HANDLE_BOTTOM | HANDLE_RIGHT));
}

/* The angle and centre of a rotation for the pointer at x. */
static void update_rotation(int x)
{
    g.rotate_degrees = rotate_angle_for(x);
    int about_centre = prefs.rotate_about_object_centre && get_current_object();
    for (int i = 0; i < 3; i++) {
        g.rotate_centre[i] = about_centre ? g.box_min[i] + (g.box_max[i] - g.box_min[i]) * 0.5f : g.down[i];
    }
}

static void drag_update(int view, int x, int y)
{
    float d[3] = {g.current[0] - g.down[0], g.current[1] - g.down[1], g.current[2] - g.down[2]};
    switch (interaction_mode) {
    case DRAW_SELECT:
        band_rect(view, g.down_x, g.down_y, x, y, OVERLAY_RECT);
        break;
    case DRAW_RECTANGLE: case DRAW_MESH: case DRAW_GRID: case DRAW_BOX: case DRAW_CYLINDER:
        band_rect(view, g.down_x, g.down_y, x, y, OVERLAY_RECT);
        show_coors_and_dim(g.current, g.down, g.current);
        break;
    case DRAW_ELLIPSE: case DRAW_DISK: case DRAW_SPHERE: case DRAW_ICOSAHEDRON:
        band_rect(view, g.down_x, g.down_y, x, y, OVERLAY_ELLIPSE);
        show_coors_and_dim(g.current, g.down, g.current);
        break;
    case MODE_ZOOM: {
        int dz = g.zoom_y - y;
        if (dz >= 1) scale_win(view, 1.1f);
        else if (dz < 0) scale_win2(view, 1.1f);
        g.zoom_y = y;
        break;
    }
    case MODE_MOVE:
    case MODE_EXTRUDE: {
        float mn[3], mx[3];
        for (int i = 0; i < 3; i++) {
            mn[i] = g.box_min[i] + d[i];
            mx[i] = g.box_max[i] + d[i];
        }
        band_box(view, mn, mx, 0.0f, nullptr);
        band_line(view, g.down_x, g.down_y, x, y);
        show_coors_and_len(g.current, g.down, g.current);
        if (interaction_mode == MODE_MOVE && !typed_len) {
            display_message("move %g %g %g - or type a distance and Enter", d[0], d[1], d[2]);
        }
        break;
    }
    case MODE_RESIZE:
        update_resize(view);
        band_box(view, g.new_min, g.new_max, 0.0f, nullptr);
        show_size(g.new_min, g.new_max);
        if (!typed_len) {
            display_message("size %g %g %g - or type a factor and Enter", g.new_max[0] - g.new_min[0],
                            g.new_max[1] - g.new_min[1], g.new_max[2] - g.new_min[2]);
        }
        break;
    case MODE_ROTATE:
        update_rotation(x);
        band_box(view, g.box_min, g.box_max, g.rotate_degrees, g.rotate_centre);
        show_angle(g.rotate_degrees);
        if (!typed_len) display_message("rotate %g degrees - or type degrees and Enter", g.rotate_degrees);
        break;
    default:
        break;
    }
}

/* ---- numbers typed during a drag ---- */

/* While a move, resize or rotate drag is held, typed characters collect
 * here; Enter applies exactly that amount on the drag's axis and ends the
 * drag: a distance for a move, a factor for a resize, degrees for a
 * rotation. */
static const char axis_names[3] = {'x', 'y', 'z'};

static int dragging_transform(void)
{
    return g.button_down && (interaction_mode == MODE_MOVE || interaction_mode == MODE_RESIZE ||
                             interaction_mode == MODE_ROTATE);
}

/* The model axis the drag goes along: the view's axis on which the
 * pointer has moved further, the horizontal one before any motion. */
static int drag_axis(void)
{
    int h = view_axes[g.view][0], v = view_axes[g.view][1];
    return std::fabs(g.current[v] - g.down[v]) > std::fabs(g.current[h] - g.down[h]) ? v : h;
}

static const char *typed_meaning(void)
{
    switch (interaction_mode) {
    case MODE_MOVE: return "move by";
    case MODE_RESIZE: return "resize by the factor";
    default: return "rotate by degrees";
    }
}

static void show_typed(void)
{
    if (interaction_mode == MODE_ROTATE) {
        display_message("%s: %s - Enter applies it, Escape clears it", typed_meaning(), typed);
    } else {
        display_message("%s along %c: %s - Enter applies it, Escape clears it", typed_meaning(),
                        axis_names[drag_axis()], typed);
    }
}

static void clear_typed(void)
{
    typed_len = 0;
    typed[0] = 0;
}

/* The drag is over once its exact amount is applied: the release that
 * follows finds no drag. */
static void end_drag_after_typed(void)
{
    g.button_down = 0;
    overlay_clear(g.view);
    set_mode(0);
    clear_typed();
    redraw_all();
    display_status();
}

static int resize_by_factor(float factor)
{
    int a = drag_axis();
    float extent = g.box_max[a] - g.box_min[a];
    if (!(extent > 0.0f)) {
        display_message("resize: the selection has no size along %c to scale - nothing changed", axis_names[a]);
        return 0;
    }
    float new_max[3], new_min[3];
    for (int i = 0; i < 3; i++) {
        new_max[i] = g.box_max[i];
        new_min[i] = g.box_min[i];
    }
    /* The side nearer the press moves; the other stays, as with a handle. */
    if (std::fabs(g.down[a] - g.box_max[a]) <= std::fabs(g.down[a] - g.box_min[a])) {
        new_max[a] = g.box_min[a] + extent * factor;
    } else {
        new_min[a] = g.box_max[a] - extent * factor;
    }
    action_resize(g.box_max, g.box_min, new_max, new_min);
    return 1;
}

static void apply_typed(void)
{
    char *end = nullptr;
    double value = typed_len ? strtod(typed, &end) : 0.0;
    int usable = typed_len && end && *end == 0 && std::isfinite(value) && std::fabs(value) <= 1e7;
    if (usable && interaction_mode == MODE_RESIZE && !(value > 0.0)) usable = 0;
    if (!usable) {
        if (!typed_len) display_message("type a number first, then Enter");
        else if (interaction_mode == MODE_RESIZE)
            display_message("resize: \"%s\" is not a factor above 0 - nothing changed; type another", typed);
        else display_message("\"%s\" is not a usable number - nothing changed; type another", typed);
        clear_typed();
        return;
    }
    float amount = (float)value;
    int axis = drag_axis();
    if (interaction_mode == MODE_MOVE) {
        float d[3] = {0, 0, 0};
        d[axis] = amount;
        action_move(d);
        end_drag_after_typed();
        display_message("moved %g along %c", amount, axis_names[axis]);
    } else if (interaction_mode == MODE_ROTATE) {
        update_rotation(g.down_x);
        action_rotate(amount, g.view, g.rotate_centre);
        end_drag_after_typed();
        display_message("rotated %g degrees", amount);
    } else {
        int done = resize_by_factor(amount);
        clear_typed();
        if (!done) return;
        end_drag_after_typed();
        display_message("resized by %g along %c", amount, axis_names[axis]);
    }
}

/* A key during a transform drag; 1 when it was taken. */
static int typed_key(int character)
{
    if (!dragging_transform()) return 0;
    if (character == '\r' || character == '\n') {
        apply_typed();
        return 1;
    }
    if (character == KEY_ESCAPE) {
        clear_typed();
        display_message("typed number cleared");
        return 1;
    }
    if (character == KEY_BACKSPACE) {
        if (typed_len) typed[--typed_len] = 0;
        show_typed();
        return 1;
    }
    if (character < 0x21 || character > 0x7e) return 1;
    if (typed_len >= (int)sizeof typed - 1) {
        display_message("that number is too long - Escape clears it");
        return 1;
    }
    typed[typed_len++] = (char)character;
    typed[typed_len] = 0;
    show_typed();
    return 1;
}

void handle_mouse_move(int view, int x, int y)
{
    if (view < 0 || view > 2) return;
    if (g.button_down) view = g.view; /* a drag stays with the view it started in */
    check_line_object();
    apply_axis_lock(&x, &y);
    float p[3];
    mouse_to_point(x, y, view, p);
    for (int i = 0; i < 3; i++) g.current[i] = p[i];
    if (draw_mode_adds_points(interaction_mode) && g.last_vertex) {
        int lx, ly;
        point2xy(g.last_vertex->point, &lx, &ly, view);
        overlays[view].line = 0;
        band_line(view, lx, ly, x, y);
        show_coors_and_len(p, g.last_vertex->point, p);
    }
    if (!g.button_down) {
        hover_readout(view, x, y, p);
        return;
    }
    if (g.set_cursor) {
        snap_to_grid(p);
        for (int i = 0; i < 3; i++) cursor_3d[i] = p[i];
        redisplay_orth();
        show_coors(p);
        return;
    }
    if (g.brush) {
        console_printf("dragselect\n");
        float a[3], b[3];
        mouse_to_point(x - BRUSH_SIZE / 2, y - BRUSH_SIZE / 2, view, a);
        mouse_to_point(x + BRUSH_SIZE / 2, y + BRUSH_SIZE / 2, view, b);
        select_all_inside(a, b, view, 1, g.remove);
        band_rect(view, x - BRUSH_SIZE / 2, y - BRUSH_SIZE / 2, x + BRUSH_SIZE / 2, y + BRUSH_SIZE / 2, OVERLAY_RECT);
        return;
    }
    if (interaction_mode != 0) snap_to_grid(g.current);
    drag_update(view, x, y);
}

/* ---- mouse up ---- */

static void finish_selection(int view, int x, int y)
{
    new_undo(UNDO_SELECTION, "selection");
    set_undo_selection(selection.selected_vertices, selection.selected_objects, 0);
    int click = x == g.down_x && y == g.down_y;
    if (selection.select_mode == SELECT_VERTEX) {
        int half = click ? (prefs.vert_size > 0 ? prefs.vert_size : 1) / 2 + 1 : 0;
        float a[3], b[3];
        if (click) {
            mouse_to_point(x - half, y - half, view, a);
            mouse_to_point(x + half, y + half, view, b);
        } else {
            for (int i = 0; i < 3; i++) a[i] = g.down[i];
            mouse_to_point(x, y, view, b);
        }
        select_all_inside(a, b, view, g.add, g.remove);
    } else if (click) {
        int range = prefs.pick_pixel_range > 0 ? prefs.pick_pixel_range : 1;
        frontend_pick(view, x, y, range, range, g.add, g.remove);
    } else {
        int hw = abs(x - g.down_x) / 2, hh = abs(y - g.down_y) / 2;
        frontend_pick(view, (x + g.down_x) / 2, (y + g.down_y) / 2, 2 * (hw ? hw : 1), 2 * (hh ? hh : 1),
                      g.add, g.remove);
    }
    redraw_all();
}

static void add_line_vertex(const float *p)
{
    if (!g.line_object) {
        g.line_object = new_object(OBJECT_NORMAL);
        g.line_surface = new_surface();
        g.line_surface->surface_kind = interaction_mode == DRAW_LINE ? SURFACE_LINE
                                       : interaction_mode == DRAW_CLOSED_LINE ? SURFACE_CLOSED_LINE
                                                               : SURFACE_POLYGON;
        object_add_surface(g.line_object, g.line_surface);
        object_add_child(world, g.line_object);
    }
    Vertex *v = object_add_new_vertex(g.line_object, p);
    surface_add_vertref(g.line_surface, new_svertex(v, 0, 0));
    g.last_vertex = v;
    /* A line being drawn is an edit: what redo would put back is stale. */
    set_unsaved_changes(1);
    redraw_all();
}

static void finish_line(void)
{
    close_line_object();
    if (!keep_draw_tool) {
        set_mode(MODE_MOVE);
        set_new_move_mode(MODE_MOVE);
    }
    redraw_all();
}

static void release_line_mode(int button)
{
    check_line_object();
    float p[3] = {g.current[0], g.current[1], g.current[2]};
    snap_to_grid(p);
    int on_last = g.last_vertex && g.last_vertex->point[0] == p[0] && g.last_vertex->point[1] == p[1] &&
                  g.last_vertex->point[2] == p[2];
    /* Clicking the first point again closes a closed line or polygon. */
    SVertex *first = g.line_surface && interaction_mode >= DRAW_CLOSED_LINE ? (SVertex *)list_get_item(g.line_surface->vertrefs, 0) : nullptr;
    int on_first = first && g.line_surface->num_vertrefs >= 3 && first->vertex->point[0] == p[0] &&
                   first->vertex->point[1] == p[1] && first->vertex->point[2] == p[2];
    if (button != 1 || on_last || on_first) finish_line();
    else add_line_vertex(p);
}

static void release_primitive(int view)
{
    Object *o = action_primitive(interaction_mode, view, g.down, g.current);
    if (o) {
        clear_selection();
        select_object(o);
        unsaved_changes = 1;
    }
    redraw_all();
}

static void release_drag(int view, int x)
{
    float d[3] = {g.current[0] - g.down[0], g.current[1] - g.down[1], g.current[2] - g.down[2]};
    switch (interaction_mode) {
    case MODE_MOVE:
        action_move(d);
        break;
    case MODE_RESIZE:
        /* From the release point: a click without motion has no dragged
         * box yet, and the last motion may lie elsewhere. */
        update_resize(view);
        action_resize(g.box_max, g.box_min, g.new_max, g.new_min);
        break;
    case MODE_ROTATE:
        update_rotation(x);
        action_rotate(g.rotate_degrees, view, g.rotate_centre);
        break;
    case MODE_EXTRUDE:
        action_extrude(g.down, d, view);
        break;
    default:
        break;
    }
    redraw_all();
}

void handle_mouse_up(int view, int x, int y, int button)
{
    if (!g.button_down || button != g.button) return;
    view = g.view;
    apply_axis_lock(&x, &y);
    g.button_down = 0;
    mouse_to_point(x, y, view, g.current);
    overlay_clear(view);
    if (g.set_cursor) {
        snap_to_grid(g.current);
        for (int i = 0; i < 3; i++) cursor_3d[i] = g.current[i];
        g.set_cursor = 0;
        redisplay_orth();
        return;
    }
    if (g.brush) {
        console_printf("dragselect end\n");
        g.brush = 0;
        redraw_all();
        display_status();
        return;
    }
    if (interaction_mode != 0) snap_to_grid(g.current);
    int mode = interaction_mode;
    if (mode == DRAW_SELECT) finish_selection(view, x, y);
    else if (mode >= 1 && mode <= 3) release_line_mode(button);
    else if (mode >= 4 && mode <= 13) release_primitive(view);
    else if (mode >= MODE_MOVE) release_drag(view, x);
    /* What the mode returns to. */
    if (mode >= 1 && mode <= 3) {
    } else if (mode >= 4 && mode <= 13 && keep_draw_tool) {
        /* The tool stays for the next shape. */
    } else if ((mode >= 4 && mode <= 13) || mode == MODE_EXTRUDE) {
        set_new_move_mode(MODE_MOVE);
        set_mode(0);
    } else if (mode == MODE_MOVE || mode == MODE_RESIZE || mode == MODE_ROTATE) {
        set_mode(0);
    } else {
        set_mode(g.mode_at_down);
    }
    display_status();
}

/* ---- keys ---- */

void handle_special_key_press(int view, int keycode, int state)
{
    if (view < 0) return;
    if (view == 3) {
        handle_special_key_press_3d(keycode, state);
        return;
    }
    int step = (state & QUALIFIER_SHIFT) ? 50 : 20;
    int control = state & QUALIFIER_CONTROL;
    float f = (state & QUALIFIER_SHIFT) ? 1.5f : 1.1f;
    switch (keycode) {
    case KEY_UP:
    case KEY_DOWN: {
        int up = keycode == KEY_UP;
        if (!control) {
            move_view(view, 0, up ? (float)step : (float)-step);
            return;
        }
        if (prefs.independent_window_zoom) {
            up ? scale_win(view, f) : scale_win2(view, f);
            return;
        }
        const int order[3] = {0, 2, 1};
        for (int v : order) up ? scale_win(v, f) : scale_win2(v, f);
        return;
    }
    case KEY_LEFT:
        move_view(view, (float)step, 0);
        return;
    case KEY_RIGHT:
        move_view(view, (float)-step, 0);
        return;
    default:
        return;
    }
}

static int is_special_code(int c)
{
    return c == KEY_LEFT || c == KEY_UP || c == KEY_RIGHT || c == KEY_DOWN;
}

/* The key preferences, in the order they are tried. */
static int handle_key_preference(int view, int c)
{
    if (c == prefs.key_reset) reset_views();
    else if (c == prefs.key_centre) { home_windows(); redisplay_orth(); }
    else if (c == 'd') action_duplicate(view);
    else if (c == prefs.key_mode_tree) set_new_select_mode(0);
    else if (c == prefs.key_mode_object) set_new_select_mode(1);
    else if (c == prefs.key_mode_vertex) set_new_select_mode(2);
    else if (c == prefs.key_snap_together) action_snap_together();
    else if (c == prefs.key_submode_move) set_new_move_mode(MODE_MOVE);
    else if (c == prefs.key_submode_resize) set_new_move_mode(MODE_RESIZE);
    else if (c == prefs.key_submode_rotate) set_new_move_mode(MODE_ROTATE);
    else if (c == prefs.key_submode_extrude) set_new_move_mode(MODE_EXTRUDE);
    else if (c == prefs.key_selection_clear) clear_selection_refresh();
    else if (c == prefs.key_select_all) select_all();
    else if (c == prefs.key_undo) action_undo();
    else if (c == prefs.key_info) list_objects();
    else if (c == prefs.key_goto) goto_selected(view);
    else if (c == prefs.key_goto_all) goto_selected_all();
    else if (c == prefs.key_selected_fit) fit_selected(view);
    else if (c == prefs.key_selected_fit_all) fit_selected_all();
    else if (c == prefs.key_selection_hide) action_hide();
    else if (c == prefs.key_zoom_in) zoom_in_win(view);
    else if (c == prefs.key_zoom_out) zoom_out_win(view);
    else return 0;
    return 1;
}

void handle_key_press(int view, int character, int state)
{
    /* Keys belong to a transform drag while it is held, wherever the
     * pointer is. */
    if (typed_key(character)) return;
    if (view == 3) {
        handle_key_press_3d(character, state);
        return;
    }
    if (is_special_code(character)) {
        handle_special_key_press(view, character, state);
        return;
    }
    if (state & QUALIFIER_CONTROL) return;
    if (character == KEY_ESCAPE) {
        cancel_drawing();
        return;
    }
    if (character == KEY_BACKSPACE || character == KEY_DELETE) {
        action_delete();
        display_status();
        return;
    }
    if (character == 0) return; /* an unset key preference never matches */
    if (handle_key_preference(view, character)) display_status();
}
