# The 3D view's fit without a display: an empty model is refused with a
# status message; a model, a selection and a single point are framed.
source [file join [lindex $argv 0] scripts harness.tcl]

proc status_of {body} { uplevel 1 [list capture_console $body] }

tcltest::test fit3d-1.1 {an empty model is refused with a status message} -body {
    status_of { vesk fit_3d }
} -match glob -result "*fit 3D view - the model is empty*"

tcltest::test fit3d-1.2 {the whole model, then the selection, is framed} -setup {
    vesk new_cube
    vesk clear_selection
} -body {
    check_match "the whole model" [status_of { vesk fit_3d }] "*3D view fitted to the model*"
    vesk select_all
    check_match "the selection" [status_of { vesk fit_3d }] "*3D view fitted to the selection*"
    mismatches
} -result {}

# Fitting changes no part of the model and records no undo step.
tcltest::test fit3d-1.3 {fitting records no undo step} -body {
    check "no undo step" $undo_count 1
    mismatches
} -result {}

finish
