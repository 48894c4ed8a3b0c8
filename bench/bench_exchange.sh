#!/bin/sh
# Times the model exchange plug-in on about a million triangles beside the
# assimp tool on the same files: makes a 709 x 709 point grid as an OBJ
# and a PLY file (two triangles per square), then prints our import of
# each and export to OBJ and glTF 2.0, and `assimp info` of each input and
# `assimp export` of the PLY file to OBJ and glTF (which includes assimp
# reading it: subtract its info time for the writing alone).
#   usage: bench/bench_exchange.sh [BUILD_DIR] [WORK_DIR]   (default build, a temporary directory)
set -e
here=$(cd "$(dirname "$0")" && pwd)
top=$(dirname "$here")
build=${1:-$top/build}
work=${2:-$(mktemp -d)}
[ -n "$2" ] || trap 'rm -rf "$work"' EXIT
mkdir -p "$work"
side=709

# The grid: heights from a fixed pattern so the file is not all zeros.
awk -v n=$side 'BEGIN {
    print "# a grid of", 2 * (n - 1) * (n - 1), "triangles"
    for (y = 0; y < n; y++) for (x = 0; x < n; x++) printf "v %g %g %g\n", x * 0.1, ((x * 7 + y * 13) % 11) * 0.03, y * 0.1
    for (y = 0; y + 1 < n; y++) for (x = 0; x + 1 < n; x++) {
        a = y * n + x + 1
        printf "f %d %d %d\nf %d %d %d\n", a, a + n, a + 1, a + 1, a + n, a + n + 1
    }
}' > "$work/grid.obj"
awk -v n=$side 'BEGIN {
    print "ply\nformat ascii 1.0"
    print "element vertex", n * n
    print "property float x\nproperty float y\nproperty float z"
    print "element face", 2 * (n - 1) * (n - 1)
    print "property list uchar int vertex_indices\nend_header"
    for (y = 0; y < n; y++) for (x = 0; x < n; x++) printf "%g %g %g\n", x * 0.1, ((x * 7 + y * 13) % 11) * 0.03, y * 0.1
    for (y = 0; y + 1 < n; y++) for (x = 0; x + 1 < n; x++) {
        a = y * n + x
        printf "3 %d %d %d\n3 %d %d %d\n", a, a + n, a + 1, a + 1, a + n, a + n + 1
    }
}' > "$work/grid.ply"

echo "$(( 2 * (side - 1) * (side - 1) )) triangles, $(( side * side )) vertices"
"$build/bench/bench_exchange" "$work/grid.obj" "$work/grid.ply" "$work"

timed() {
    label=$1; shift
    start=$(date +%s.%N)
    "$@" > /dev/null 2>&1 || echo "  ($label failed)"
    end=$(date +%s.%N)
    awk -v l="$label" -v s="$start" -v e="$end" 'BEGIN { printf "  %-22s %7.2f s\n", l, e - s }'
}
echo "assimp tool:"
timed "info OBJ" assimp info "$work/grid.obj"
timed "info PLY" assimp info "$work/grid.ply"
timed "info OBJ, raw" assimp info "$work/grid.obj" -r
timed "info PLY, raw" assimp info "$work/grid.ply" -r
timed "export PLY to OBJ" assimp export "$work/grid.ply" "$work/assimp_out.obj"
timed "export PLY to glTF" assimp export "$work/grid.ply" "$work/assimp_out.gltf"
