# Helper for test_vesksh.tcl: prints argc and argv as a Tcl list.
puts [list $argc $argv]
