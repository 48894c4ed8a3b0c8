/*
 * coin_check.cpp - reads a VRML 1.0, VRML 2.0 or Inventor file with
 * Coin3D and prints "errors E triangles T lines L textures_missing M":
 * the read errors Coin reported (each also printed on standard error),
 * the triangles and line segments its callback action generates for the
 * scene, and the texture images it could not find.  Texture names are
 * written as "file://" urls, which Coin takes as plain file names, so
 * missing images are counted apart from the other errors.  Used by the
 * writer tests as an independent reader.
 *   usage: coin_check FILE
 */
#include <Inventor/SoDB.h>
#include <Inventor/SoInput.h>
#include <Inventor/actions/SoCallbackAction.h>
#include <Inventor/errors/SoReadError.h>
#include <Inventor/nodes/SoSeparator.h>
#include <Inventor/nodes/SoShape.h>

#include <cstdio>
#include <cstring>

static int errors = 0;
static int textures_missing = 0;
static long triangles = 0;
static long segments = 0;

static void on_read_error(const SoError *error, void *)
{
    SbString text = error->getDebugString();
    if (strstr(text.getString(), "Could not read texture file")) {
        textures_missing++;
        return;
    }
    errors++;
    fprintf(stderr, "%s\n", error->getDebugString().getString());
}

static void on_triangle(void *, SoCallbackAction *, const SoPrimitiveVertex *, const SoPrimitiveVertex *,
                        const SoPrimitiveVertex *)
{
    triangles++;
}

static void on_segment(void *, SoCallbackAction *, const SoPrimitiveVertex *, const SoPrimitiveVertex *)
{
    segments++;
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: coin_check FILE\n");
        return 2;
    }
    SoDB::init();
    SoReadError::setHandlerCallback(on_read_error, nullptr);
    SoInput in;
    if (!in.openFile(argv[1])) {
        printf("errors 1 triangles 0 lines 0\n");
        return 1;
    }
    SoSeparator *root = SoDB::readAll(&in);
    if (!root) {
        printf("errors %d triangles 0 lines 0\n", errors ? errors : 1);
        return 1;
    }
    root->ref();
    SoCallbackAction action;
    action.addTriangleCallback(SoShape::getClassTypeId(), on_triangle, nullptr);
    action.addLineSegmentCallback(SoShape::getClassTypeId(), on_segment, nullptr);
    action.apply(root);
    root->unref();
    printf("errors %d triangles %ld lines %ld textures_missing %d\n", errors, triangles, segments, textures_missing);
    return errors ? 1 : 0;
}
