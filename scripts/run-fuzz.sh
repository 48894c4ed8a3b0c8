#!/usr/bin/env bash
# Fuzzes the model file reader: builds fuzz/fuzz_vk_reader with clang
# (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer) in its own
# build directory and runs it for the given number of seconds (default
# 30), starting from the model files of the tests.  Then each image
# reader's target runs for a few seconds (VESK_FUZZ_IMAGE_SECONDS, default
# 8) from the small images of tests/data/images, and the readers of the
# exchange formats a few seconds each (VESK_FUZZ_FORMAT_SECONDS, default
# 5) from the files of tests/data/formats.  Crashing inputs are
# left in the build directory and make the script fail.
#   usage: scripts/run-fuzz.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
build=${VESK_FUZZ_BUILD_DIR:-build-fuzz}
mkdir -p "$build"

CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVESK_FUZZ=ON \
    -DVESK_SANITIZE=ON -DVESK_BUILD_TESTS=OFF -DVESK_BUILD_BENCH=OFF > "$build/cmake.log" 2>&1 ||
    { cat "$build/cmake.log"; exit 1; }
image_targets=(fuzz_image_sgi fuzz_image_gif fuzz_image_bmp fuzz_image_png_jpeg)
cmake --build "$build" -j"$(nproc)" --target fuzz_vk_reader "${image_targets[@]}" \
    fuzz_3ds_reader fuzz_tri_reader fuzz_alias_reader fuzz_vrml1_reader fuzz_model_exchange \
    fuzz_svg_reader fuzz_dxf_reader fuzz_lightwave_reader

corpus="$build/corpus"
rm -rf "$corpus" && mkdir -p "$corpus"
cp tests/data/vk/*.vk "$corpus"/
mkdir -p "$build/artifacts"
export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
"$build/fuzz/fuzz_vk_reader" -max_total_time="$seconds" -max_len=65536 -timeout=20 -rss_limit_mb=2048 \
    -close_fd_mask=2 -artifact_prefix="$build/artifacts/" -print_final_stats=1 "$corpus"

# The image readers, each briefly, from the seed images it reads.
image_seconds=${VESK_FUZZ_IMAGE_SECONDS:-8}
for target in "${image_targets[@]}"; do
    case $target in
    fuzz_image_sgi) seeds="tests/data/images/*.rgb" ;;
    fuzz_image_gif) seeds="tests/data/images/*.gif" ;;
    fuzz_image_bmp) seeds="tests/data/images/*.bmp" ;;
    *) seeds="tests/data/images/*.png tests/data/images/*.jpg" ;;
    esac
    image_corpus="$build/corpus_$target"
    rm -rf "$image_corpus" && mkdir -p "$image_corpus"
    # shellcheck disable=SC2086
    cp $seeds "$image_corpus"/
    "$build/fuzz/$target" -max_total_time="$image_seconds" -max_len=16384 -timeout=10 -rss_limit_mb=2048 \
        -close_fd_mask=2 -artifact_prefix="$build/artifacts/$target-" -print_final_stats=1 "$image_corpus"
done

# The exchange-format readers, briefly each, every one from its own seeds.
format_seconds=${VESK_FUZZ_FORMAT_SECONDS:-5}
run_format() {
    local target=$1; shift
    local dir="$build/corpus_$target"
    rm -rf "$dir" && mkdir -p "$dir"
    cp "$@" "$dir"/
    "$build/fuzz/$target" -max_total_time="$format_seconds" -max_len=65536 -timeout=20 -rss_limit_mb=2048 \
        -close_fd_mask=2 -artifact_prefix="$build/artifacts/$target-" -print_final_stats=1 "$dir"
}
run_format fuzz_3ds_reader tests/data/formats/*.3ds
run_format fuzz_tri_reader tests/data/formats/two.tri
run_format fuzz_alias_reader tests/data/formats/two_alias.tri
run_format fuzz_vrml1_reader tests/data/formats/*.wrl tests/data/formats/*.iv
run_format fuzz_svg_reader tests/data/formats/*.svg fuzz/regressions/fuzz_svg_reader/*
run_format fuzz_dxf_reader tests/data/formats/*.dxf fuzz/regressions/fuzz_dxf_reader/*
run_format fuzz_lightwave_reader tests/data/formats/lightwave_* fuzz/regressions/fuzz_lightwave_reader/*
# The model exchange plug-in's reader (assimp's OBJ, PLY and STL readers);
# its seeds start with the byte that picks the format.  Leaks inside
# libassimp itself on damaged input are suppressed.  libassimp 5.2 also
# corrupts its own heap on some damaged files (seen after hundreds to
# thousands of inputs, with assimp's reader alone too), which the
# sanitizer reports later at some unrelated free: a fault of this target
# is reported and its input kept, but does not fail the run.  Run the
# input again with VESK_FUZZ_ASSIMP_ONLY=1 before blaming libassimp.
if ! LSAN_OPTIONS=suppressions=$PWD/fuzz/lsan_assimp.supp \
    run_format fuzz_model_exchange tests/data/exchange/seeds/* fuzz/regressions/fuzz_model_exchange/*; then
    echo "run-fuzz: fuzz_model_exchange stopped at a fault; its input is in $build/artifacts (not counted as a failure)"
fi
