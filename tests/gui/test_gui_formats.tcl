# File > Import and File > Export in the running modeller: every format
# of this build is offered, each dialog is filtered by the format's
# suffix, and importing or exporting through the menus reads or writes
# the file and says so on the status line.  The file dialogs are
# answered by stand-ins that record the file types they were given.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk [file join $::src examples sample.vk]

set import .mbar.file.menu.import
set export .mbar.file.menu.export

# ---- every format is listed ----
proc labels {menu} {
    set out {}
    set last [remote "$menu index end"]
    for {set i 0} {$i <= $last} {incr i} { lappend out [remote "$menu entrycget $i -label"] }
    return $out
}
set imports [labels $import]
foreach label {"3D Studio..." "Alias triangle..." "Triangle..." "VRML 1..." "Inventor..."} {
    check_true "import menu lists $label" [expr {[lsearch -exact $imports $label] >= 0}]
}
set exports [labels $export]
foreach label {"VRML 2.0..." "VRML 1.0..." "Inventor..." "Triangle..."} {
    check_true "export menu lists $label" [expr {[lsearch -exact $exports $label] >= 0}]
}

# The dialogs answer with a file of the scratch directory and remember the
# file types they were asked to filter by.
remote "proc ::vesk::ops::choose_save_file {title types extension} {
    set ::dialog_types \$types
    return \[file join [list $::scratch] out\$extension\]
}"
remote "proc ::vesk::ops::choose_open_file {title types} {
    set ::dialog_types \$types
    return \$::next_file
}"

# ---- exports ----
foreach {label suffix header message} {
    "VRML 2.0..." .wrl "#VRML V2.0 utf8" "written VRML 2.0 file*"
    "VRML 1.0..." .wrl "#VRML V1.0 ascii" "written VRML 1.0 file*"
    "Inventor..." .iv "#Inventor V2.1 ascii" "written Inventor file*"
    "Triangle..." .tri "*0x*" "written triangle file*keeps no hierarchy, names or texture coordinates*"
} {
    set file [file join $::scratch out$suffix]
    file delete -force $file
    remote "$export invoke [list $label]; update"
    check_true "export $label: dialog filtered by $suffix" [string match "*$suffix*" [remote {set ::dialog_types}]]
    check_true "export $label: file written" [file exists $file]
    if {[file exists $file]} {
        set fd [open $file r]
        set first [gets $fd]
        close $fd
        check_true "export $label: contents" [string match $header $first]
    }
    check_true "export $label: status line" [string match $message [remote {set ::vesk::main::message}]]
}

# ---- imports ----
proc object_count {} { return [llength [remote {vesk object_get_children [vesk get_world]}]] }
set tri [file join $::scratch in.tri]
set fd [open $tri w]
puts $fd "0 0 0  1 0 0  1 1 0  0xff0000"
close $fd
foreach {label file suffix message} [list \
    "Triangle..." $tri .tri "imported in.tri" \
    "VRML 1..." [file join $::scratch out.wrl] .wrl "imported * objects from *out.wrl" \
    "Inventor..." [file join $::scratch out.iv] .iv "imported * objects from *out.iv" \
    "3D Studio..." [file join $::src tests data formats cube_assimp.3ds] .3ds "imported 2 objects from *" \
    "Alias triangle..." [file join $::src tests data formats two_alias.tri] .tri "imported two_alias.tri"] {
    set before [object_count]
    remote "set ::next_file [list $file]; $import invoke [list $label]; update"
    check_true "import $label: dialog filtered by $suffix" [string match "*$suffix*" [remote {set ::dialog_types}]]
    check_true "import $label: objects added" [expr {[object_count] > $before}]
    check_true "import $label: status line" [string match $message [remote {set ::vesk::main::message}]]
}

# The SVG drawing, filtered by .svg.
set label "Vector drawing (SVG)..."
set before [object_count]
remote "set ::next_file [list [file join $::src tests data formats logo.svg]]; $import invoke [list $label]; update"
check_true "import $label: dialog filtered by .svg" [string match "*.svg*" [remote {set ::dialog_types}]]
check_true "import $label: objects added" [expr {[object_count] > $before}]
check_true "import $label: status line" [string match "imported *logo.svg" [remote {set ::vesk::main::message}]]

# A file that is not what its menu says changes nothing and says so.
set before [object_count]
remote "set ::next_file [list $tri]; $import invoke {3D Studio...}; update"
check "bad 3DS: nothing added" [object_count] $before
check_true "bad 3DS: status line" [string match "*was not imported*" [remote {set ::vesk::main::message}]]

stop_vesk
finish
