# Tools > Render with POV-Ray in the running modeller, chosen with real
# clicks: the scene of the model and the 3D view goes to povray in the
# background, the status line shows the progress, and the picture opens
# in a window of its own at the 3D view's size, showing the model.  With
# povray not on the path the user is told which Debian package to
# install.  File > Export writes the renderer and world formats.
# Skipped where povray is missing.
source [file join [file dirname [info script]] gui_lib.tcl]

if {[auto_execok povray] eq ""} {
    puts "povray is not installed: skipped"
    finish
}

start_vesk [file join $::src examples sample.vk]
settle

# The status line's messages, all of them, from the start of the render.
remote {
    set ::render_messages {}
    trace add variable ::vesk::main::message write {apply {args {lappend ::render_messages $::vesk::main::message}}}
}

pick_menu tools "Render with POV-Ray"
check_true "the picture window opens" [wait_remote {[winfo exists .povray_render] && [winfo ismapped .povray_render]} 600]
set messages [remote {set ::render_messages}]
check_true "progress on the status line" [string match "*rendering with POV-Ray*" $messages]
check_true "done on the status line" [string match "rendered with POV-Ray: *scene.png" [remote {set ::vesk::main::message}]]
check_true "the interface answered while rendering" [expr {[llength $messages] >= 2}]

# The picture has the 3D view's size and shows the model: pixels that are
# not the background.
lassign [view_rect 3] vx vy vw vh
check "picture width" [remote {image width ::vesk::ops::povray_image}] $vw
check "picture height" [remote {image height ::vesk::ops::povray_image}] $vh
set lit [remote {
    set n 0
    set w [image width ::vesk::ops::povray_image]
    set h [image height ::vesk::ops::povray_image]
    for {set y 0} {$y < $h} {incr y 4} {
        for {set x 0} {$x < $w} {incr x 4} {
            lassign [::vesk::ops::povray_image get $x $y] r g b
            if {$r > 8 || $g > 8 || $b > 8} { incr n }
        }
    }
    set n
}]
check_true "the picture shows the model ($lit pixels)" [expr {$lit > 20}]

# On the screen too: the picture window is not all one colour.
lassign [remote {list [winfo rootx .povray_render.picture] [winfo rooty .povray_render.picture]}] px py
set screen [shot render]
check_true "the picture is on the screen" [expr {[colour_count $screen $px $py $vw $vh] > 2}]

# Closing the window frees the picture.
click_widget .povray_render.close
check_true "the window closes" [wait_remote {![winfo exists .povray_render]}]
check "the picture is freed" [remote {lsearch -exact [image names] ::vesk::ops::povray_image}] -1

# File > Export offers the renderer and world formats, each dialog
# filtered by its suffix (the dialog is answered by a stand-in).
remote "proc ::vesk::ops::choose_save_file {title types extension} {
    set ::dialog_types \$types
    return \[file join [list $::scratch] out\$extension\]
}"
foreach {label suffix header} {
    "POV-Ray..." .pov "// POV-Ray 3.7 scene written by VESK"
    "RenderMan..." .rib "##RenderMan RIB"
    "DIVE..." .vr "/\* DIVE world written by VESK \*/"
    "Massive..." .massive "VESK-MASSIVE 1"
    "DVS..." .dvs "VESK-DVS 1"
} {
    set file [file join $::scratch out$suffix]
    file delete -force $file
    remote ".mbar.file.menu.export invoke [list $label]; update"
    check_true "export $label: dialog filtered by $suffix" [string match "*$suffix*" [remote {set ::dialog_types}]]
    check_true "export $label: file written" [file exists $file]
    if {[file exists $file]} {
        set fd [open $file r]
        set first [gets $fd]
        close $fd
        check_true "export $label: first line ($first)" [string match $header $first]
    }
}

# Without povray on the path: a message box naming the package (the
# test driver's plug-in turns message boxes off; here one is wanted).
remote {set ::saved_path $::env(PATH); set ::env(PATH) /nonexistent; auto_reset; set ::vesk_no_questions 0}
pick_menu tools "Render with POV-Ray"
set text [answer_message_box ok]
check_true "missing povray names the Debian package ($text)" [string match "*Debian package \"povray\"*" $text]
remote {set ::env(PATH) $::saved_path; auto_reset; set ::vesk_no_questions 1}
check "no picture window without povray" [remote {winfo exists .povray_render}] 0

finish
