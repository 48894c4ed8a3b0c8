#!/bin/sh
# Installs the build into a scratch prefix and builds the SDK test plug-in
# against what was installed, as an outside author would: the installed
# vesk.h and libveskcore found through the installed vesk.pc, nothing from
# the source tree.  Also checks that the installation holds the sample
# plug-ins in the installed plug-in directory and that the installed
# vesksh loads them from there.
# usage: build_sdk_plugin.sh BUILD_DIR PREFIX CC SOURCE OUTPUT
set -e
build=$1 prefix=$2 cc=$3 source=$4 output=$5
rm -rf "$prefix"
cmake --install "$build" --prefix "$prefix" >"$prefix.log" 2>&1 || { cat "$prefix.log"; exit 1; }
pc=$(find "$prefix" -name vesk.pc -path '*/pkgconfig/*' | head -n 1)
[ -n "$pc" ] || { echo "vesk.pc was not installed"; exit 1; }
for file in include/vesk.h; do
    [ -f "$prefix/$file" ] || { echo "$file was not installed"; exit 1; }
done
plugindir=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --variable=plugindir vesk)
for plugin in vesk_planarity.so vesk_model_stats.so; do
    [ -f "$plugindir/$plugin" ] || { echo "$plugin is not in $plugindir"; exit 1; }
done
# The installed shell runs from the prefix (finding libveskcore beside it)
# and loads the installed sample plug-ins.
mkdir -p "$prefix/home"
printf 'puts [vesk list]\n' >"$prefix/list.tcl"
HOME=$prefix/home VESK_HOME=$prefix/share/vesk "$prefix/bin/vesksh" "$prefix/list.tcl" >"$prefix/list.txt" 2>&1 ||
    { cat "$prefix/list.txt"; exit 1; }
grep -q '^model_statistics ' "$prefix/list.txt" ||
    { echo "the installed vesksh did not load the installed sample plug-ins"; cat "$prefix/list.txt"; exit 1; }
ldd "$prefix/bin/vesksh" | grep -q "$prefix/bin/../lib.*/libveskcore.so" ||
    { echo "the installed vesksh does not use the installed libveskcore"; ldd "$prefix/bin/vesksh"; exit 1; }
flags=$(PKG_CONFIG_PATH=$(dirname "$pc") PKG_CONFIG_LIBDIR= pkg-config --cflags --libs vesk)
echo "pkg-config --cflags --libs vesk: $flags"
case "$flags" in
    *"$prefix"*) ;;
    *) echo "the flags do not point into the installation"; exit 1 ;;
esac
mkdir -p "$(dirname "$output")"
# The source's own directory holds only the test's list of names.
"$cc" -std=c11 -Wall -Wextra -Werror -Werror=implicit-function-declaration \
    -shared -fPIC "$source" -o "$output" $flags
echo "built $output"
