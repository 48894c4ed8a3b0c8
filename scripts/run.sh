#!/usr/bin/env bash
# Builds VESK and launches it on the sample model (or on the model named
# as the first argument).  Installs the Debian packages it needs first.
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)"

model=${1:-examples/sample.vk}
export VESK_HOME=${VESK_HOME:-$PWD}
if [ -x build/vesk ]; then
  exec build/vesk "$model"
fi
# Without the graphical modeller, open the model in the headless shell.
echo "Loading $model into the VESK shell; type Tcl commands such as: vesk get_info"
{ printf 'vesk load_vk {%s}\nputs [vesk get_info]\n' "$model"; cat; } | build/vesksh
