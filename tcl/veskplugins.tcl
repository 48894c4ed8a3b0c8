# veskplugins.tcl - plug-ins: the Plugins menu, and at start-up every plug-in
# of the plug-in directories (the preference prefs_plugin_dir, where a
# leading "$VESK_HOME" stands for the installation directory, then the
# installed ones), loaded by the core with "vesk plugin_load_all": Tcl
# plug-ins (*.tcl) are sourced at global level, libraries (*.so) loaded
# and started.  Each directory is taken in name order, and one plug-in
# that fails is reported without stopping the rest.  Plug-ins add their
# own entries to this menu and to the others.

namespace eval ::vesk::plugins {}

# Loads every plug-in of the plug-in directory, of the installed plug-in
# directory and of "plugins" beside the program (so that a build runs
# with its plug-ins before it is installed), each directory in name order;
# the core reports each one that fails.  Returns the number of files
# tried.
proc ::vesk::plugins::load_all {} {
    return [vesk plugin_load_all]
}

# A Tcl plug-in chosen by the user.
proc ::vesk::plugins::choose_script {} {
    set file [::vesk::ops::choose_open_file "Load a Tcl plug-in" $::vesk::ops::filetypes(tclplugin)]
    if {$file eq ""} { return }
    if {[vesk plugin_load $file]} { ::vesk::ops::message "plug-in [file tail $file] loaded" }
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
