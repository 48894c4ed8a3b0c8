# files.tcl - whole-file reads and writes for the script and GUI tests
# (sourced by scripts/harness.tcl and gui/gui_lib.tcl).

proc read_bytes {path} {
    set fd [open $path rb]
    set bytes [read $fd]
    close $fd
    return $bytes
}

proc write_bytes {path bytes} {
    set fd [open $path wb]
    puts -nonewline $fd $bytes
    close $fd
}
