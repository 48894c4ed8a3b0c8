#!/usr/bin/env bash
# Installs the Debian packages that building and testing VESK need.
# Safe to run again; it skips apt-get when everything is present.
set -euo pipefail
packages=(build-essential cmake pkg-config tcl8.6-dev tk8.6-dev libtogl-dev
          libglu1-mesa-dev libgtest-dev libbenchmark-dev xvfb xauth xdotool
          imagemagick clang libclang-rt-14-dev netpbm libpng-dev libjpeg62-turbo-dev
          libcoin-dev view3dscene assimp-utils lib3ds-dev libassimp-dev tkdnd x11-utils povray
          libxml2-dev libdxflib-dev python3-ezdxf)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo_cmd apt-get update -qq
  $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi
