/*
 * fileio/number_scan.cpp - see number_scan.h.
 *
 * Model files hold millions of numbers, so the common case is done here
 * directly: a plain decimal whose digits fit the target's mantissa and
 * whose power of ten is exact in it.  Then one multiplication or division
 * gives the correctly rounded value (Clinger's fast path), the same value
 * std::from_chars gives.  Everything else (long mantissas, large
 * exponents, "inf", "nan") goes to std::from_chars, which is exact and
 * ignores the locale.  Out-of-range values are left to strtod in the C
 * locale.  A leading '+', which scanf accepts and from_chars refuses, is
 * skipped.
 */
#include "fileio/number_scan.h"

#include <charconv>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <locale.h>

static const double exact_double_powers[23] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                               1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                               1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
static const float exact_float_powers[11] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f};

static const char *skip_blanks(const char *p)
{
    while (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n') p++;
    return p;
}

static bool is_digit(char c) { return c >= '0' && c <= '9'; }

/* The end of the run of characters that could belong to a number. */
static const char *run_end(const char *p)
{
    while ((unsigned char)*p > ' ') p++;
    return p;
}

/* A plain decimal: sign, digits, point, digits, exponent. */
struct Decimal {
    bool negative;
    uint64_t mantissa;    /* the digits without the point */
    int digits;           /* digits read, leading zeros included */
    int exponent;         /* value = mantissa * 10^exponent */
    const char *end;
};

/* Reads a plain decimal of at most 19 digits; false when the text is
 * anything else (the caller then asks from_chars). */
static bool read_decimal(const char *p, Decimal *d)
{
    d->negative = *p == '-';
    if (d->negative) p++;
    uint64_t m = 0;
    const char *start = p;
    for (; is_digit(*p); p++) m = m * 10 + (uint64_t)(*p - '0');
    int digits = (int)(p - start), exponent = 0;
    if (*p == '.') {
        const char *fraction = ++p;
        for (; is_digit(*p); p++) m = m * 10 + (uint64_t)(*p - '0');
        exponent = -(int)(p - fraction);
        digits -= exponent;
    }
    /* More digits than a uint64_t holds: m wrapped, so not this way. */
    if (digits == 0 || digits > 19) return false;
    if (*p == 'e' || *p == 'E') {
        const char *q = p + 1;
        bool negative_exponent = *q == '-';
        if (*q == '-' || *q == '+') q++;
        if (is_digit(*q)) {
            int e = 0;
            for (; is_digit(*q); q++) {
                if (e > 10000) return false;
                e = e * 10 + (*q - '0');
            }
            exponent += negative_exponent ? -e : e;
            p = q;
        }
    }
    d->mantissa = m;
    d->digits = digits;
    d->exponent = exponent;
    d->end = p;
    return true;
}

static bool fast_value(const Decimal &d, double *out)
{
    if (d.mantissa > (1ull << 53) || d.exponent < -22 || d.exponent > 22) return false;
    double m = (double)d.mantissa;
    double v = d.exponent >= 0 ? m * exact_double_powers[d.exponent] : m / exact_double_powers[-d.exponent];
    *out = d.negative ? -v : v;
    return true;
}

/* A float through the double: rounding the correctly rounded double to
 * float gives the correctly rounded float unless the double lies exactly
 * halfway between two floats (rounding is monotonic, and such halfway
 * points are doubles).  Subnormal and out-of-range floats are left out. */
static bool float_via_double(double d, float *out)
{
    double a = d < 0 ? -d : d;
    if (a != 0.0 && !(a >= 1.1754943508222875e-38 && a <= 3.4028234663852886e38)) return false;
    uint64_t bits;
    memcpy(&bits, &d, sizeof bits);
    if ((bits & 0x1FFFFFFFull) == 0x10000000ull) return false;
    *out = (float)d;
    return true;
}

static bool fast_value(const Decimal &d, float *out)
{
    if (d.mantissa <= (1ull << 24) && d.exponent >= -10 && d.exponent <= 10) {
        float m = (float)d.mantissa;
        float v = d.exponent >= 0 ? m * exact_float_powers[d.exponent] : m / exact_float_powers[-d.exponent];
        *out = d.negative ? -v : v;
        return true;
    }
    double v;
    return fast_value(d, &v) && float_via_double(v, out);
}

/* A number beyond the type's range: strtod decides between infinity,
 * zero and a subnormal, in the C locale whatever the program's is. */
static locale_t c_locale(void)
{
    static locale_t c = newlocale(LC_ALL_MASK, "C", (locale_t)0);
    return c;
}

static void settle_out_of_range(const char *p, const char *end, double *out)
{
    char text[512];
    size_t n = (size_t)(end - p) < sizeof text - 1 ? (size_t)(end - p) : sizeof text - 1;
    memcpy(text, p, n);
    text[n] = '\0';
    *out = strtod_l(text, nullptr, c_locale());
}

static void settle_out_of_range(const char *p, const char *end, float *out)
{
    char text[512];
    size_t n = (size_t)(end - p) < sizeof text - 1 ? (size_t)(end - p) : sizeof text - 1;
    memcpy(text, p, n);
    text[n] = '\0';
    *out = strtof_l(text, nullptr, c_locale());
}

template <typename T> static const char *scan_real(const char *p, T *out)
{
    p = skip_blanks(p);
    if (*p == '+' && p[1] != '-') p++;
    Decimal d;
    if (read_decimal(p, &d) && fast_value(d, out)) return d.end;
    const char *end = run_end(p);
    T value{};
    auto [ptr, ec] = std::from_chars(p, end, value);
    if (ptr == p) return nullptr;
    if (ec == std::errc::result_out_of_range) settle_out_of_range(p, ptr, &value);
    *out = value;
    return ptr;
}

const char *scan_double(const char *p, double *out) { return scan_real(p, out); }
const char *scan_float(const char *p, float *out) { return scan_real(p, out); }

const char *scan_long(const char *p, long long *out)
{
    p = skip_blanks(p);
    if (*p == '+' && p[1] != '-') p++;
    bool negative = *p == '-';
    const char *q = negative ? p + 1 : p;
    if (!is_digit(*q)) return nullptr;
    unsigned long long value = 0;
    bool overflow = false;
    for (; is_digit(*q); q++) {
        unsigned digit = (unsigned)(*q - '0');
        if (value > (ULLONG_MAX - digit) / 10) overflow = true;
        else value = value * 10 + digit;
    }
    if (negative) {
        *out = overflow || value > (unsigned long long)LLONG_MAX + 1 ? LLONG_MIN : (long long)(0 - value);
    } else {
        *out = overflow || value > (unsigned long long)LLONG_MAX ? LLONG_MAX : (long long)value;
    }
    return q;
}

int scan_doubles(const char *p, double *out, int n)
{
    for (int i = 0; i < n; i++) {
        p = scan_double(p, &out[i]);
        if (!p) return i;
    }
    return n;
}

int scan_floats(const char *p, float *out, int n)
{
    for (int i = 0; i < n; i++) {
        p = scan_float(p, &out[i]);
        if (!p) return i;
    }
    return n;
}

int clamp_to_int(long long value)
{
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return (int)value;
}
