/*
 * bench_gl_floor.cpp - the cost of the OpenGL driver alone: draws an N by N
 * grid of quads, split into 2*N*N triangles, filling a window of W by H
 * pixels with the simplest state there is (one colour, no lighting, no
 * depth test, no blending, one indexed draw from buffer objects) and prints
 * milliseconds per frame.  It shows how fast any view of the modeller can
 * possibly draw that many triangles at that size on this machine.
 * usage: bench_gl_floor [N W H]   (default 224 446 325: 100k triangles in
 * the 3D view's default size)
 */
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>
#include <X11/Xlib.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

struct Window3d {
    Display *display;
    Window window;
    GLXContext context;
};

static int open_window(Window3d &w, int width, int height)
{
    w.display = XOpenDisplay(nullptr);
    if (!w.display) {
        fprintf(stderr, "bench_gl_floor: cannot open the display\n");
        return 0;
    }
    int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8, None};
    XVisualInfo *visual = glXChooseVisual(w.display, DefaultScreen(w.display), attributes);
    if (!visual) {
        fprintf(stderr, "bench_gl_floor: no double-buffered RGB visual\n");
        return 0;
    }
    Window root = RootWindow(w.display, visual->screen);
    XSetWindowAttributes set = {};
    set.colormap = XCreateColormap(w.display, root, visual->visual, AllocNone);
    w.window = XCreateWindow(w.display, root, 0, 0, width, height, 0, visual->depth, InputOutput, visual->visual,
                             CWColormap, &set);
    XMapWindow(w.display, w.window);
    XSync(w.display, False);
    w.context = glXCreateContext(w.display, visual, nullptr, True);
    XFree(visual);
    return w.context && glXMakeCurrent(w.display, w.window, w.context);
}

/* Uploads the grid over the whole of clip space and returns its index count. */
static GLsizei upload_grid(int n)
{
    std::vector<float> points;
    for (int i = 0; i <= n; i++) {
        for (int j = 0; j <= n; j++) {
            points.push_back(j * 2.0f / n - 1.0f);
            points.push_back(i * 2.0f / n - 1.0f);
        }
    }
    std::vector<uint32_t> indices;
    for (int i = 0; i < n; i++) {
        for (int j = 0; j < n; j++) {
            uint32_t a = i * (n + 1) + j, b = a + 1, c = a + n + 1, d = c + 1;
            indices.insert(indices.end(), {a, b, c, b, d, c});
        }
    }
    GLuint buffers[2];
    glGenBuffers(2, buffers);
    glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
    glBufferData(GL_ARRAY_BUFFER, points.size() * sizeof(float), points.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, indices.size() * sizeof(uint32_t), indices.data(), GL_STATIC_DRAW);
    glVertexPointer(2, GL_FLOAT, 0, nullptr);
    glEnableClientState(GL_VERTEX_ARRAY);
    return (GLsizei)indices.size();
}

static void draw_frame(Window3d &w, GLsizei count)
{
    glClear(GL_COLOR_BUFFER_BIT);
    glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_INT, nullptr);
    glXSwapBuffers(w.display, w.window);
    glFinish();
}

int main(int argc, char **argv)
{
    int n = argc > 1 ? atoi(argv[1]) : 224;
    int width = argc > 3 ? atoi(argv[2]) : 446;
    int height = argc > 3 ? atoi(argv[3]) : 325;
    if (n < 1 || width < 1 || height < 1) {
        fprintf(stderr, "usage: bench_gl_floor [grid_size width height]\n");
        return 2;
    }
    Window3d w;
    if (!open_window(w, width, height)) return 1;
    glViewport(0, 0, width, height);
    glColor3f(0.8f, 0.3f, 0.2f);
    GLsizei count = upload_grid(n);
    draw_frame(w, count);
    const int frames = 20;
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < frames; i++) draw_frame(w, count);
    double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    printf("  %d triangles in %dx%d pixels, simplest state: %.1f ms/frame (%s)\n", 2 * n * n, width, height,
           ms / frames, (const char *)glGetString(GL_RENDERER));
    glXMakeCurrent(w.display, None, nullptr);
    glXDestroyContext(w.display, w.context);
    XCloseDisplay(w.display);
    return 0;
}
