# settings.tcl - the interface's own settings, those the preferences file
# does not hold (keep_draw_tool), kept in veskui.txt beside it.
# Sourced by veskops.tcl.

# ---- interface settings ----

# Settings of the interface that the preferences file does not hold
# (keep_draw_tool), kept as "name value" lines in "veskui.txt" beside it
# and saved whenever one changes.
namespace eval ::vesk::ops {
    variable ui_settings {keep_draw_tool}
}

proc ::vesk::ops::ui_settings_file {} {
    return [file join [file dirname [recent_file]] veskui.txt]
}

proc ::vesk::ops::ui_settings_load {} {
    variable ui_settings
    if {![catch {open [ui_settings_file] r} fd]} {
        set text ""
        catch {set text [read $fd 4096]}
        close $fd
        foreach line [split $text \n] {
            if {[catch {llength $line} n] || $n != 2} { continue }
            lassign $line name value
            # Only known names, only true or false: anything else is skipped.
            if {$name in $ui_settings && [string is boolean -strict $value]} {
                set ::$name [expr {[string is true $value] ? 1 : 0}]
            }
        }
    }
    foreach name $ui_settings {
        trace add variable ::$name write ::vesk::ops::ui_settings_save
    }
}

proc ::vesk::ops::ui_settings_save {args} {
    variable ui_settings
    set text ""
    foreach name $ui_settings {
        if {[info exists ::$name]} { append text [list $name [set ::$name]] \n }
    }
    write_file_replacing [ui_settings_file] $text "interface settings"
}
