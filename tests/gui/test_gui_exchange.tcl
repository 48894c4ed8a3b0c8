# The model exchange plug-in in the running modeller: its entries are in
# File > Import and File > Export, and with real mouse and keyboard input
# File > Import > Model... opens the file dialog, reads the file typed
# into it and adds its objects; File > Export > glTF 2.0... writes a file
# that assimp reads back.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk_empty

set file_menu .mbar.file.menu
set import $file_menu.import
set export $file_menu.export
set import_label "Model: OBJ, FBX, glTF, Collada, PLY, STL... (assimp)..."

proc labels {menu} {
    set out {}
    set last [remote "$menu index end"]
    for {set i 0} {$i <= $last} {incr i} { lappend out [remote "$menu entrycget $i -label"] }
    return $out
}
check_true "import entry listed" [expr {[lsearch -exact [labels $import] $import_label] >= 0}]
set exports [labels $export]
foreach label {"OBJ (assimp)..." "STL binary (assimp)..." "STL ASCII (assimp)..." "PLY (assimp)..."
               "glTF 2.0 (assimp)..." "glTF 2.0 binary GLB (assimp)..." "Collada (assimp)..." "3MF (assimp)..."} {
    check_true "export entry $label listed" [expr {[lsearch -exact $exports $label] >= 0}]
}

# Opens File, moves onto a cascade so that it opens, and clicks one of its
# entries: all with the real pointer.
proc pick_cascade_entry {cascade_label submenu label} {
    set menu .mbar.file.menu
    click_widget .mbar.file
    if {![wait_remote "\[winfo ismapped $menu\]"]} { error "the File menu did not open" }
    set index [remote [list $menu index $cascade_label]]
    lassign [remote "list \[winfo rootx $menu\] \[winfo rooty $menu\] \[$menu yposition $index\]"] x y top
    exec xdotool mousemove [expr {$x + 40}] [expr {$y + $top + 8}]
    wait_until "$cascade_label to be the active entry" {[remote [list $menu index active]] == $index}
    exec xdotool mousemove [expr {$x + 45}] [expr {$y + $top + 9}] click 1
    if {![wait_remote "\[winfo ismapped $submenu\]"]} { error "the $cascade_label menu did not open" }
    set index [remote [list $submenu index $label]]
    lassign [remote "list \[winfo rootx $submenu\] \[winfo rooty $submenu\] \[$submenu yposition $index\]"] x y top
    # Along the cascade's own row first, so the pointer does not cross
    # other entries of File on its way.
    exec xdotool mousemove [expr {$x + 20}] [expr {$y + 8}]
    wait_idle
    exec xdotool mousemove [expr {$x + 40}] [expr {$y + $top + 8}] click 1
}

# ---- import through the menu and the real file dialog ----
set obj [file join $::scratch other_tool.obj]
file copy [file join $::src tests data exchange other_tool.obj] [file join $::src tests data exchange other_tool.mtl] $::scratch
pick_cascade_entry Import $import $import_label
check "the open dialog came" [choose_file_in_dialog $obj] 1
check "the model's objects were added" \
    [wait_remote {[llength [vesk object_get_children [vesk get_world]]] == 3} 100] 1
check "their names" [remote {lmap id [vesk object_get_children [vesk get_world]] { vesk object_get_name $id }}] \
    {front roof_left roof_edge}
check_true "status line" [string match "imported *other_tool.obj: 3 objects, 14 vertices, 3 surfaces" \
    [remote {set ::vesk::main::message}]]
check "one undo step" [remote {lindex [vesk undo_history] end}] import

# ---- export through the menu and the real save dialog ----
set gltf [file join $::scratch exported.gltf]
pick_cascade_entry Export $export "glTF 2.0 (assimp)..."
set w .__tk_filedialog
if {[wait_remote "\[winfo exists $w\] && \[winfo ismapped $w\]"]} {
    set entry [remote {set ::tk::dialog::file::__tk_filedialog(ent)}]
    click_widget $entry
    exec xdotool key ctrl+a BackSpace
    exec xdotool type --delay 2 $gltf
    exec xdotool key Return
    check "the glTF file was written" [wait_remote "\[file exists [list $gltf]\]" 100] 1
    set assimp [auto_execok assimp]
    if {$assimp ne "" && [file exists $gltf]} {
        set info [exec {*}$assimp info $gltf -r 2>@1]
        check_true "assimp reads it: 3 meshes" [regexp {\nMeshes:\s+3\n} $info]
        check_true "assimp reads it: 8 triangles" [regexp {\nFaces:\s+8\n} $info]
    }
    check_true "export status line" [string match "exported *exported.gltf (gltf2): *" [remote {set ::vesk::main::message}]]
} else {
    check "the save dialog came" 0 1
}

stop_vesk
finish
