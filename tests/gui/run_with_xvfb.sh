#!/bin/sh
# Runs one command with its own virtual X display: starts Xvfb on the first
# free display number from :90 to :99 (local connections only), runs the
# command with DISPLAY set, stops that Xvfb and passes on the command's
# exit status.
# usage: run_with_xvfb.sh COMMAND ARGS...

xvfb_pid=""
stop_xvfb() {
    if [ -n "$xvfb_pid" ]; then
        kill "$xvfb_pid" 2>/dev/null
        wait "$xvfb_pid" 2>/dev/null
    fi
}
trap stop_xvfb EXIT
trap 'exit 130' INT TERM

for n in 90 91 92 93 94 95 96 97 98 99; do
    # A lock file or socket means another server has this number.
    [ -e "/tmp/.X$n-lock" ] || [ -e "/tmp/.X11-unix/X$n" ] && continue
    Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
    xvfb_pid=$!
    # Wait up to five seconds for the server's socket; a server that dies
    # lost the race for this number to another one.
    tries=0
    while [ $tries -lt 50 ]; do
        if ! kill -0 "$xvfb_pid" 2>/dev/null; then
            xvfb_pid=""
            break
        fi
        [ -e "/tmp/.X11-unix/X$n" ] && break
        sleep 0.1
        tries=$((tries + 1))
    done
    if [ -n "$xvfb_pid" ] && [ -e "/tmp/.X11-unix/X$n" ]; then
        DISPLAY=":$n"
        export DISPLAY
        "$@"
        exit $?
    fi
    stop_xvfb
    xvfb_pid=""
done
echo "run_with_xvfb.sh: no free X display from :90 to :99" >&2
exit 1
