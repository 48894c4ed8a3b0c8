/*
 * fileio/number_scan.h - reading numbers from a line the way scanf's %d
 * and %f do (skip blanks, take the longest number at that point), but
 * independent of the locale and without allocating.  Numbers too large
 * for their type become the largest value (infinity for floats).
 */
#ifndef VESK_FILEIO_NUMBER_SCAN_H
#define VESK_FILEIO_NUMBER_SCAN_H

/* Each returns the position just after the number, or null (and leaves
 * *out alone) when the text at p, after blanks, is not a number.  The
 * text must end with a NUL. */
const char *scan_double(const char *p, double *out);
const char *scan_float(const char *p, float *out);
const char *scan_long(const char *p, long long *out);

/* Scans up to n numbers; returns how many were found before the first
 * thing that is not a number. */
int scan_doubles(const char *p, double *out, int n);
int scan_floats(const char *p, float *out, int n);

/* Clamps to the int range (for messages and counts). */
int clamp_to_int(long long value);

#endif
