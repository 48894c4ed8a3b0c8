/*
 * fileio/scene_writers.h - the renderer and world-format exporters:
 * POV-Ray 3.7 scenes, RenderMan RIB, DIVE worlds, and the MASSIVE and DVS
 * geometry texts.  Each writes the whole model through a temporary file
 * that replaces the target only when everything was written, and
 * returns 1 when written, 0 when the file could not be written (the
 * console says why; an earlier file is intact).
 */
#ifndef VESK_FILEIO_SCENE_WRITERS_H
#define VESK_FILEIO_SCENE_WRITERS_H

/* What the last of these exports could not express, for the status
 * line. */
struct SceneNotes {
    long polygons_skipped;     /* fewer than 3 usable corners */
    long lines_skipped;        /* lines the format has no place for */
    long textures_skipped;     /* textures the format or renderer can't read */
};
extern SceneNotes scene_notes;

int write_pov_file(const char *filename);
int write_rib_file(const char *filename);
int write_dive_file(const char *filename);
int write_massive_file(const char *filename);
int write_dvs_file(const char *filename);

/* The commands "write_POV", "write_rib", "write_dive", "write_massive"
 * and "write_dvs": "1" or "0" as the command result. */
int write_POV(char *filename);
int write_rib(char *filename);
int command_write_dive(char *filename);
int command_write_massive(char *filename);
int command_write_dvs(char *filename);

#endif
