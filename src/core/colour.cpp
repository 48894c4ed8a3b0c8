/*
 * colour.cpp - conversions between packed 24-bit colours (0x00RRGGBB, or
 * 0x00BBGGRR in the sgi order) and float colour components.  The packing
 * functions neither clamp nor mask: callers pass components in range.
 */
#include "vesk.h"

static const float ONE_OVER_255 = 0.003921569f;

/* Truncation toward zero of a scaled component, kept defined for values
 * outside the int range. */
static long trunc_component(float value)
{
    if (!(value == value)) return 0;
    if (value >= 2147483647.0f) return 2147483647L;
    if (value <= -2147483648.0f) return -2147483647L - 1;
    return (long)value;
}

static long pack(long high, long mid, long low)
{
    return (long)(((unsigned long)high << 16) | ((unsigned long)mid << 8) | (unsigned long)low);
}

void long_rgb_to_floats(long colour, float *r, float *g, float *b)
{
    *r = (float)((colour >> 16) & 0xff) * ONE_OVER_255;
    *g = (float)((colour >> 8) & 0xff) * ONE_OVER_255;
    *b = (float)(colour & 0xff) * ONE_OVER_255;
}

void long_rgb_to_floatv(long colour, float *v)
{
    long_rgb_to_floats(colour, &v[0], &v[1], &v[2]);
    v[3] = 1.0f;
}

long rgb_floats_to_long(float r, float g, float b)
{
    return pack(trunc_component(r * 255), trunc_component(g * 255), trunc_component(b * 255));
}

long rgb_floatv_to_long(const float *v)
{
    return rgb_floats_to_long(v[0], v[1], v[2]);
}

long rgb_float255v_to_long(const float *v)
{
    return pack(trunc_component(v[0]), trunc_component(v[1]), trunc_component(v[2]));
}

long rgb_floatv_to_long_sgi(const float *v)
{
    return pack(trunc_component(v[2] * 255), trunc_component(v[1] * 255), trunc_component(v[0] * 255));
}
