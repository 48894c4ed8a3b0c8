# The 3D view's fit without a display: an empty model is refused with a
# status message; a model, a selection and a single point are framed.
source [file join [lindex $argv 0] scripts harness.tcl]

proc status_of {body} { uplevel 1 [list capture_console $body] }

check_match "empty model" [status_of { vesk fit_3d }] "*fit 3D view - the model is empty*"

vesk new_cube
vesk clear_selection
check_match "the whole model" [status_of { vesk fit_3d }] "*3D view fitted to the model*"
vesk select_all
check_match "the selection" [status_of { vesk fit_3d }] "*3D view fitted to the selection*"
# Fitting changes no part of the model and records no undo step.
check "no undo step" $undo_count 1

finish
