# redo_support.tcl - what the redo script tests share: a print of the
# whole model without its object ids (a snapshot undo or a redo of a
# model copy gives new ids), and the model they start from, a box and a
# flat quadrilateral at off-grid positions (tests/data/vk/box_and_flat.vk).

proc tree_print {id} {
    set kids {}
    foreach kid [vesk object_get_children $id] { lappend kids [tree_print $kid] }
    list [vesk object_get_name $id] [vesk object_get_centre $id] \
        [vesk object_get_vertices $id] [vesk object_get_surfaces $id] $kids
}
proc model_print {} { tree_print [vesk get_world] }

set ::model [file join $::tests_dir data vk box_and_flat.vk]

proc reload {} {
    capture_console { vesk clear_all; vesk load_vk $::model }
    vesk set_select_mode 0
    vesk clear_selection
}
proc box {} { lindex [vesk object_get_children [vesk get_world]] 0 }
proc flat {} { lindex [vesk object_get_children [vesk get_world]] 1 }
