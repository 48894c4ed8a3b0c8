#!/bin/sh
# Times redraws and picks of the four views of the real modeller under a
# virtual display, for models of 100k and 1M triangles, and prints
# milliseconds.  usage: bench/bench_views.sh [BUILD_DIR]   (default build)
set -e
here=$(cd "$(dirname "$0")" && pwd)
top=$(dirname "$here")
build=${1:-$top/build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home" "$work/plugins"
printf 'VKPR 12\nplugin_dir "%s"\n' "$work/plugins" > "$work/home/veskprefs.txt"
cat > "$work/plugins/timing.tcl" <<'TCL'
# Runs once the model is loaded and drawn, prints the figures and quits.
after 2000 {
    update
    # Vertex markers stay on, as they are by default.
    vesk redraw_all
    update
    foreach v {0 1 2 3} {
        vesk redraw_all
        set first [vesk_time_redraw $v 1]
        puts [format "  view %d redraw: %8s ms after a change, %8s ms unchanged" $v $first [vesk_time_redraw $v 5]]
    }
    # The 3D view while the camera turns: a Left key before each frame.
    set w .views.xyzframe.f.win
    event generate $w <Enter> -x 50 -y 50
    event generate $w <Motion> -x 50 -y 50
    set sum 0
    for {set i 0} {$i < 10} {incr i} {
        event generate $w <KeyPress-Left>
        set sum [expr {$sum + [vesk_time_redraw 3 1]}]
    }
    puts [format "  view 3 redraw while the camera turns: %.2f ms a frame" [expr {$sum / 10}]]
    set sum 0
    vesk redraw_all
    foreach v {0 1 2 3} { set sum [expr {$sum + [vesk_time_redraw $v 1]}] }
    puts [format "  all four views after a change: %.1f ms" $sum]
    # Commands that change the views alone, each drawn through to the end.
    update
    foreach command {zoom_in fit_all reset_views} {
        set us [lindex [time {vesk $command; update idletasks; vesk_time_redraw 3 1} 3] 0]
        puts [format "  %s, all four views drawn: %.1f ms" $command [expr {$us / 1000.0}]]
    }
    # A move drag of the whole model, a frame a step (the move and every
    # view drawn), without autosave and while the autosave timer runs:
    # the longest frame says what an autosave costs the user.
    vesk set_select_mode 0
    vesk select_all
    update
    trace add variable ::vesk::main::message write {apply {args {
        if {[string match autosaved* $::vesk::main::message]} { incr ::autosaves }
    }}}
    foreach {label seconds} {"no autosave" 0 "autosave every second" 1} {
        set ::prefs_autosave_seconds $seconds
        set ::autosaves 0
        set frames {}
        set start [clock milliseconds]
        while {[clock milliseconds] - $start < 4000} {
            set t [clock microseconds]
            vesk move 0.001 0 0
            update
            lappend frames [expr {([clock microseconds] - $t) / 1000.0}]
        }
        set frames [lsort -real $frames]
        puts [format "  drag, %s: %d frames, median %.0f ms, longest %.0f ms, %d autosaves" $label \
            [llength $frames] [lindex $frames [expr {[llength $frames] / 2}]] [lindex $frames end] $::autosaves]
    }
    set ::prefs_autosave_seconds 0
    foreach mode {0 1 2} {
        vesk set_select_mode $mode
        set w [winfo width .views.xyzframe.f.win]
        set h [winfo height .views.xyzframe.f.win]
        set p3 [vesk_time_pick 3 [expr {$w / 2}] [expr {$h / 2}] 3]
        set w [winfo width .views.xzframe.f.win]
        set h [winfo height .views.xzframe.f.win]
        set p2 [vesk_time_pick 2 [expr {$w / 2}] [expr {$h / 2}] 3]
        puts [format "  pick, select mode %d: 3D view %s ms, plan view %s ms" $mode $p3 $p2]
    }
    exit 0
}
TCL
for n in 224 708; do
  tclsh "$here/make_mesh.tcl" $n "$work/mesh.vk"
  echo "model of $((2 * n * n)) triangles:"
  (cd "$top" && HOME="$work/home" sh "$top/tests/gui/run_with_xvfb.sh" "$build/vesk" "$work/mesh.vk" 2>&1) |
    grep -E "^  "
done
# The driver's own cost of 100k and 20k small triangles in a window the size
# of the 3D view, with the simplest drawing state: the floor for that view.
if [ -x "$build/bench/bench_gl_floor" ]; then
  echo "the OpenGL driver alone:"
  for n in 224 100; do
    sh "$top/tests/gui/run_with_xvfb.sh" "$build/bench/bench_gl_floor" $n 446 325
  done
fi
