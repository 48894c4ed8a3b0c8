#!/bin/sh
# Runs one script test in vesksh with a fresh, empty home directory so that
# no preferences from an earlier run (or the user) leak in.
# usage: run_script_test.sh HOME_DIR VESKSH SCRIPT ARGS...
home=$1; shift
rm -rf "$home" && mkdir -p "$home" || exit 1
HOME=$home exec "$@"
