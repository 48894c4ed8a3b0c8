# render.tcl - Tools > Render with POV-Ray: the scene written, povray run
# in the background, the picture shown.
# Sourced by veskops.tcl.

# ---- rendering with POV-Ray ----

namespace eval ::vesk::ops {
    # The render under way: its channel, its files, the last output.
    variable povray [dict create]
}

# Where the scene and the picture go: POV-Ray may write only below /tmp
# and the current directory.
proc ::vesk::ops::povray_dir {} {
    set base /tmp
    if {[info exists ::env(TMPDIR)] && [file isdirectory $::env(TMPDIR)]} { set base $::env(TMPDIR) }
    return [file join $base vesk_povray_[pid]]
}

# Renders the model as the 3D view shows it with POV-Ray, in the
# background so that the interface stays alive; the status line shows the
# progress and the picture opens in a window of its own when done.
proc ::vesk::ops::render_povray {} {
    variable povray
    if {[dict exists $povray channel]} {
        message "POV-Ray is still rendering the last picture"
        return
    }
    set program [auto_execok povray]
    if {$program eq ""} {
        error_box "Render with POV-Ray" "POV-Ray is not installed." \
            "Install the Debian package \"povray\" (apt-get install povray) and try again."
        return
    }
    set view [::vesk::view::window_of xyz]
    set width 320
    set height 240
    if {[winfo exists $view] && [winfo width $view] > 1 && [winfo height $view] > 1} {
        set width [winfo width $view]
        set height [winfo height $view]
    }
    set dir [povray_dir]
    if {[catch {file mkdir $dir} error]} {
        error_box "Render with POV-Ray" "Can't make the folder for the picture." $error
        return
    }
    set pov [file join $dir scene.pov]
    set picture [file join $dir scene.png]
    file delete -force $picture
    if {[run write_POV $pov] ne "1"} {
        message "render: can't write the POV-Ray file $pov - see the console"
        return
    }
    set command [list {*}$program +I$pov +O$picture +W$width +H$height -D +FN +V]
    if {[catch {open |[list {*}$command 2>@1] r} channel]} {
        error_box "Render with POV-Ray" "Can't start POV-Ray." $channel
        return
    }
    fconfigure $channel -blocking 0 -translation binary
    set povray [dict create channel $channel picture $picture output ""]
    fileevent $channel readable [list ::vesk::ops::povray_output $channel]
    message "rendering with POV-Ray (${width}x$height)..."
}

# POV-Ray's output: "Rendered n of m pixels" lines become the progress
# on the status line; at the end the picture is shown.
proc ::vesk::ops::povray_output {channel} {
    variable povray
    set text [read $channel]
    dict append povray output $text
    # Only the tail is kept, for the message if the render fails.
    dict set povray output [string range [dict get $povray output] end-4000 end]
    set done {}
    foreach {all n m} [regexp -all -inline {Rendered (\d+) of (\d+) pixels} $text] {
        set done [expr {$m > 0 ? 100 * $n / $m : 0}]
    }
    if {$done ne ""} { message "rendering with POV-Ray... $done%" }
    if {![eof $channel]} { return }
    fconfigure $channel -blocking 1
    set failed [catch {close $channel} error]
    set picture [dict get $povray picture]
    set output [dict get $povray output]
    set povray [dict create]
    if {![file exists $picture]} {
        set lines [lrange [split [string map {"\r" "\n"} $output] "\n"] end-12 end]
        error_box "Render with POV-Ray" "POV-Ray made no picture." [join $lines "\n"]
        return
    }
    if {$failed} { message "POV-Ray ended with a message: $error" }
    povray_show $picture
}

# The picture in a window of its own; a new render replaces it.
proc ::vesk::ops::povray_show {picture} {
    set w .povray_render
    destroy $w
    catch {image delete ::vesk::ops::povray_image}
    if {[catch {image create photo ::vesk::ops::povray_image -file $picture} error]} {
        error_box "Render with POV-Ray" "Can't show the picture $picture." $error
        return
    }
    toplevel $w
    wm title $w "POV-Ray render"
    label $w.picture -image ::vesk::ops::povray_image -borderwidth 0
    label $w.file -text $picture -anchor w
    button $w.close -text Close -command [list destroy $w]
    pack $w.picture -side top
    pack $w.file -side top -fill x
    pack $w.close -side right -padx 4 -pady 4
    bind $w <Destroy> {if {"%W" eq ".povray_render"} {catch {image delete ::vesk::ops::povray_image}}}
    message "rendered with POV-Ray: $picture"
}
