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

# Loads every plug-in of the directory.  Returns the number of files tried.
proc ::vesk::plugins::load_all {} {
    set dir [directory]
    if {$dir eq "" || ![file isdirectory $dir]} { return 0 }
    set scripts [lsort [glob -nocomplain -types {f r} -directory $dir *.tcl]]
    set libraries [lsort [glob -nocomplain -types {f r} -directory $dir *.so]]
    foreach file $scripts { source_script $file }
    foreach file $libraries { vesk plugin_load $file }
    return [expr {[llength $scripts] + [llength $libraries]}]
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
