# Test driver plug-in: loaded from the plug-in directory by the GUI tests.
# It turns off questions and opens the scripting socket with full access
# so that the test can drive the program (gui_lib.tcl sends the token).
set ::vesk_no_questions 1
after idle {
    set ::vesk::ops::socket_full_access 1
    set ::vesk::ops::socket_on 1
    ::vesk::ops::socket_start
}
