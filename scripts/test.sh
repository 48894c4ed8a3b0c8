#!/usr/bin/env bash
# Builds VESK from scratch and runs every test: first a normal build with
# warnings fatal, then the same suite under AddressSanitizer and
# UndefinedBehaviorSanitizer, with a short fuzzing run of the file readers
# between the two when clang is available.  Installs the Debian packages
# it needs first.
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/install-deps.sh

export CTEST_OUTPUT_ON_FAILURE=1
jobs=$(nproc)

echo "== build and test"
rm -rf build-test
cmake -S . -B build-test -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVESK_WERROR=ON
cmake --build build-test -j"$jobs"
(cd build-test && ctest -j"$jobs" --timeout 900)

if [ -x scripts/run-fuzz.sh ] && command -v clang++ >/dev/null; then
  echo "== fuzz the model file and image readers"
  ./scripts/run-fuzz.sh 30
fi

echo "== build and test under AddressSanitizer and UndefinedBehaviorSanitizer"
rm -rf build-asan
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DVESK_WERROR=ON -DVESK_SANITIZE=ON
cmake --build build-asan -j"$jobs"
(cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
   UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest -j"$jobs" --timeout 1800)

