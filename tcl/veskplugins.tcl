# veskplugins.tcl - plug-ins: the Plugins menu, and at start-up every plug-in
# in the plug-in directory (the preference prefs_plugin_dir, where a
# leading "$VESK_HOME" stands for the installation directory).  Tcl
# plug-ins (*.tcl) are sourced at global level; libraries (*.so) are handed
# to the core with "vesk plugin_load".  Each is taken in sorted order, and
# one that fails is reported on the status line without stopping the rest.
# Plug-ins add their own entries to this menu and to the others.

namespace eval ::vesk::plugins {}

# The plug-in directory with "$VESK_HOME" expanded; "" when none is set.
proc ::vesk::plugins::directory {} {
    if {![info exists ::prefs_plugin_dir]} { return "" }
    set dir [string trim $::prefs_plugin_dir]
    set home [expr {[info exists ::VESK_HOME] ? $::VESK_HOME : ""}]
    foreach prefix [list {$VESK_HOME} {${VESK_HOME}}] {
        if {[string first $prefix $dir] == 0} {
            set dir $home[string range $dir [string length $prefix] end]
            break
        }
    }
    return $dir
}

# Sources one Tcl plug-in; returns 1 when it ran without error.
proc ::vesk::plugins::source_script {file} {
    if {[catch {uplevel #0 [list source $file]} error]} {
        ::vesk::ops::message "plug-in [file tail $file] failed: $error"
        return 0
    }
    return 1
}

# The plug-ins built with the program, in "plugins" beside it (so that a
# build runs with its plug-ins before it is installed).
proc ::vesk::plugins::program_directory {} {
    return [file join [file dirname [info nameofexecutable]] plugins]
}

# Loads every plug-in of the plug-in directory, then those built with the
# program that the directory has no file of the same name for.  Returns
# the number of files tried.
proc ::vesk::plugins::load_all {} {
    set tried 0
    set seen {}
    foreach dir [list [directory] [program_directory]] {
        if {$dir eq "" || ![file isdirectory $dir]} { continue }
        set scripts {}
        set libraries {}
        foreach file [lsort [glob -nocomplain -types {f r} -directory $dir *.tcl *.so]] {
            if {[file tail $file] in $seen} { continue }
            lappend seen [file tail $file]
            if {[file extension $file] eq ".tcl"} { lappend scripts $file } else { lappend libraries $file }
        }
        foreach file $scripts { source_script $file }
        foreach file $libraries { vesk plugin_load $file }
        incr tried [expr {[llength $scripts] + [llength $libraries]}]
    }
    return $tried
}

# A Tcl plug-in chosen by the user.
proc ::vesk::plugins::choose_script {} {
    set file [::vesk::ops::choose_open_file "Load a Tcl plug-in" $::vesk::ops::filetypes(tclplugin)]
    if {$file eq ""} { return }
    if {[source_script $file]} { ::vesk::ops::message "plug-in [file tail $file] loaded" }
}

proc ::vesk::plugins::build_menu {} {
    set m .mbar.plugins.menu
    if {![winfo exists $m]} { return }
    $m add command -label "Load plugin..." \
        -command {::vesk::ops::with_open_file "Load a plug-in library" plugin plugin_load}
    $m add command -label "Load Tcl plug-in..." -command ::vesk::plugins::choose_script
    $m add separator
}

::vesk::plugins::build_menu
::vesk::plugins::load_all
