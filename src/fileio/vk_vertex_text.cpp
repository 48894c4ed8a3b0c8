/*
 * fileio/vk_vertex_text.cpp - see vk_vertex_text.h.
 */
#include "fileio/vk_vertex_text.h"
#include "fileio/number_scan.h"

#include <charconv>
#include <cmath>
#include <cstring>

/* Reads text (room for a NUL after n) back as the reader does. */
static double read_back(char *text, size_t n)
{
    double d = 0.0;
    text[n] = '\0';
    scan_double(text, &d);
    return d;
}

static const double powers_of_ten[23] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/* Writes n / 10^k as a decimal without trailing zeros; returns its length. */
static size_t format_decimal(long long n, int k, char *text)
{
    char digits[32];
    unsigned long long magnitude = n < 0 ? 0ull - (unsigned long long)n : (unsigned long long)n;
    size_t len = (size_t)(std::to_chars(digits, digits + sizeof digits, magnitude).ptr - digits);
    while (k > 0 && len > 1 && digits[len - 1] == '0') len--, k--;
    if (k > 0 && magnitude == 0) k = 0;
    char *p = text;
    if (n < 0) *p++ = '-';
    if (k == 0) {
        memcpy(p, digits, len);
        return (size_t)(p + len - text);
    }
    if ((int)len > k) {
        memcpy(p, digits, len - (size_t)k);
        p += len - (size_t)k;
        *p++ = '.';
        memcpy(p, digits + len - (size_t)k, (size_t)k);
        return (size_t)(p + k - text);
    }
    *p++ = '0';
    *p++ = '.';
    for (int z = (int)len; z < k; z++) *p++ = '0';
    memcpy(p, digits, len);
    return (size_t)(p + len - text);
}

/* The short text for a coordinate of an unrotated object: the decimal with
 * the fewest places whose value, read as a double and moved by
 * translation, rounds to exactly the wanted float.  The reader converts a
 * decimal of up to 2^53 with at most 22 places exactly as n / 10^k, so that
 * is what is tried here.  Returns 0 when no such decimal is found. */
static size_t short_coordinate(double local, float wanted, float translation, char *text, double *as_read)
{
    if (!std::isfinite(local) || wanted == 0.0f || !std::isfinite(wanted)) return 0;
    int exponent;
    std::frexp(wanted, &exponent);
    /* A float's spacing near wanted is 2^(exponent - 24): enough places
     * for a step well inside half of it. */
    int k = (int)std::ceil((25 - exponent) * 0.3010299956639812) - 1;
    if (k < 0) k = 0;
    for (int tries = 0; tries < 3 && k <= 22; tries++, k++) {
        double scaled = local * powers_of_ten[k];
        if (std::fabs(scaled) >= 9007199254740992.0) return 0;
        long long n = std::llround(scaled);
        double value = (double)n / powers_of_ten[k];
        float back = (float)(value + translation);
        if (std::memcmp(&back, &wanted, sizeof back) == 0) {
            *as_read = value;
            return format_decimal(n, k, text);
        }
    }
    return 0;
}

void vk_vertex_text(const VkObjectPlan *plan, const float *point, VkVertexText *out)
{
    double local[3];
    vk_plan_local(plan, point, local);
    char (*text)[64] = out->text;
    size_t *length = out->length;
    double as_read[3];
    const VkPlacement *placement = &plan->placement;
    for (int i = 0; i < 3; i++) {
        length[i] = 0;
        if (!placement->rotate && !placement->translate) {
            length[i] = (size_t)(std::to_chars(text[i], text[i] + 64, point[i]).ptr - text[i]);
            as_read[i] = read_back(text[i], length[i]);
        } else if (!placement->rotate) {
            /* The value read is worked out here without reading it. */
            length[i] = short_coordinate(local[i], point[i], placement->translation[i], text[i], &as_read[i]);
        }
        if (length[i] == 0) {
            length[i] = (size_t)(std::to_chars(text[i], text[i] + 64, local[i]).ptr - text[i]);
            as_read[i] = local[i];
        }
    }
    if (!vk_plan_reads_back(plan, as_read, point)) {
        for (int i = 0; i < 3; i++) {
            length[i] = (size_t)(std::to_chars(text[i], text[i] + 64, local[i]).ptr - text[i]);
        }
    }
}
