# File > Import > DXF... in the running modeller: the dialog is filtered
# by .dxf, a drawing is imported as one object with its layers, the
# status line says so, one undo takes it out, and a file that is not DXF
# changes nothing and says why.  The file dialog is answered by a
# stand-in that records the file types it was given.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk [file join $::src examples sample.vk]

set import .mbar.file.menu.import
remote "proc ::vesk::ops::choose_open_file {title types} {
    set ::dialog_types \$types
    return \$::next_file
}"
proc object_count {} { return [llength [remote {vesk object_get_children [vesk get_world]}]] }

set before [object_count]
set drawing [file join $::src tests data formats dxf_r12.dxf]
remote "set ::next_file [list $drawing]; $import invoke {DXF...}; update"
check_true "dialog filtered by .dxf" [string match "*.dxf*" [remote {set ::dialog_types}]]
check "one object added" [object_count] [expr {$before + 1}]
set top [lindex [remote {vesk object_get_children [vesk get_world]}] end]
check "named after the file" [remote "vesk object_get_name $top"] dxf_r12
check "one child per layer" [llength [remote "vesk object_get_children $top"]] 5
check_true "status line" [string match "imported *dxf_r12.dxf: * entities on 5 layers*" \
    [remote {set ::vesk::main::message}]]
remote {vesk undo; update}
check "undo takes the drawing out" [object_count] $before

set text [file join $::scratch not_a_drawing.dxf]
set fd [open $text w]
puts $fd "hello"
close $fd
remote "set ::next_file [list $text]; $import invoke {DXF...}; update"
check "not DXF: nothing added" [object_count] $before
check_true "not DXF: status line" [string match "import_dxf: *not a DXF file*" [remote {set ::vesk::main::message}]]

stop_vesk
finish
