/*
 * app/readouts.cpp - the two read-outs of the status line, "coors" and
 * "size", formatted for positions, sizes, distances and angles.
 */
#include "app/tcl_bridge.h"
#include "vesk.h"

#include <cmath>
#include <cstdio>

enum { READOUT = 128 };

void display_coor_data(const char *coors, const char *size)
{
    tcl_set_string("coors", coors);
    tcl_set_string("size", size);
}

static void format_point(char *out, const float *p)
{
    snprintf(out, READOUT, "X %.3f  Y %.3f  Z %.3f", p[0], p[1], p[2]);
}

static void format_dim(char *out, const float *a, const float *b)
{
    snprintf(out, READOUT, "W %.3f  H %.3f  D %.3f", std::fabs(b[0] - a[0]), std::fabs(b[1] - a[1]),
             std::fabs(b[2] - a[2]));
}

void show_coors(const float *p)
{
    char coors[READOUT];
    format_point(coors, p);
    display_coor_data(coors, " ");
}

void show_coors_and_point(const float *p, const float *q)
{
    char coors[READOUT], size[READOUT];
    format_point(coors, p);
    snprintf(size, READOUT, "Point X %.3f  Y %.3f  Z %.3f", q[0], q[1], q[2]);
    display_coor_data(coors, size);
}

void show_coors_and_dim(const float *p, const float *a, const float *b)
{
    char coors[READOUT], size[READOUT];
    format_point(coors, p);
    format_dim(size, a, b);
    display_coor_data(coors, size);
}

void show_size(const float *a, const float *b)
{
    char size[READOUT];
    format_dim(size, a, b);
    display_coor_data(" ", size);
}

void show_coors_and_len(const float *p, const float *a, const float *b)
{
    char coors[READOUT], size[READOUT];
    format_point(coors, p);
    double dx = b[0] - a[0], dy = b[1] - a[1], dz = b[2] - a[2];
    snprintf(size, READOUT, "Distance: %.3f", std::sqrt(dx * dx + dy * dy + dz * dz));
    display_coor_data(coors, size);
}

void show_coors_and_bb(const float *p, const float *r)
{
    char coors[READOUT], size[READOUT];
    format_point(coors, p);
    float d[3] = {p[0] - r[0], p[1] - r[1], p[2] - r[2]};
    if (d[0] == 0 && d[1] == 0 && d[2] == 0) {
        format_point(size, r);
    } else {
        snprintf(size, READOUT, "W %.3f  H %.3f  D %.3f", d[0], d[1], d[2]);
    }
    display_coor_data(coors, size);
}

void show_angle(float degrees)
{
    char coors[READOUT];
    snprintf(coors, READOUT, "%.1f degrees", degrees);
    display_coor_data(coors, "");
}
