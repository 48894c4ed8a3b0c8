# dialogs.tcl - the small dialogs that ask for values before a command
# runs, object ids for commands that take them, result text windows and
# the About box.
# Sourced by veskops.tcl.

# ---- dialogs asking for values ----

# A small non-modal dialog: one labelled entry per value.  OK checks every
# value by its kind (int, float or string) and then calls
# "vesk COMMAND VALUES...".  Returns the dialog's path.
#   fields: list of {label kind default}
proc ::vesk::ops::ask {command title fields {hint ""}} {
    variable ask_value
    set w .ask_$command
    destroy $w
    toplevel $w
    wm title $w $title
    wm transient $w .
    wm resizable $w 0 0
    set f [ttk::frame $w.f -padding 12]
    pack $f -fill both -expand 1
    set row 0
    if {$hint ne ""} {
        grid [ttk::label $f.hint -text $hint -style Hint.TLabel -wraplength 280] \
            -row $row -column 0 -columnspan 2 -sticky w -pady {0 8}
        incr row
    }
    set index 0
    foreach field $fields {
        lassign $field label kind default
        set ask_value($command,$index) $default
        ttk::label $f.l$index -text $label
        ttk::entry $f.e$index -width [expr {$kind eq "string" ? 32 : 12}] \
            -textvariable ::vesk::ops::ask_value($command,$index)
        grid $f.l$index -row $row -column 0 -sticky w -padx {0 8} -pady 2
        grid $f.e$index -row $row -column 1 -sticky ew -pady 2
        incr row
        incr index
    }
    grid columnconfigure $f 1 -weight 1
    set b [ttk::frame $f.buttons]
    grid $b -row $row -column 0 -columnspan 2 -sticky e -pady {12 0}
    ttk::button $b.ok -text OK -default active \
        -command [list ::vesk::ops::ask_ok $w $command $fields]
    ttk::button $b.cancel -text Cancel -command [list destroy $w]
    pack $b.cancel $b.ok -side right -padx {6 0}
    bind $w <Return> [list $b.ok invoke]
    bind $w <KP_Enter> [list $b.ok invoke]
    bind $w <Escape> [list destroy $w]
    place_dialog $w
    if {[winfo exists $f.e0]} {
        focus $f.e0
        $f.e0 selection range 0 end
    }
    return $w
}

# The error text for one typed value, or "" when it suits its kind.
proc ::vesk::ops::check_value {kind label value} {
    if {$kind eq "int" && ![string is integer -strict $value]} {
        return "$label: \"$value\" is not a whole number"
    }
    if {$kind eq "float" && ![string is double -strict $value]} {
        return "$label: \"$value\" is not a number"
    }
    return ""
}

# The values of an ask dialog, checked; "" (with a message) when one is bad.
proc ::vesk::ops::ask_values {command fields} {
    variable ask_value
    set values {}
    set index 0
    foreach field $fields {
        lassign $field label kind
        set value $ask_value($command,$index)
        if {$kind ne "string"} { set value [string trim $value] }
        set error [check_value $kind $label $value]
        if {$error ne ""} {
            message $error
            return -code error $error
        }
        lappend values $value
        incr index
    }
    return $values
}

# Runs the command of an ask dialog when all its values are good.
proc ::vesk::ops::ask_ok {w command fields} {
    if {[catch {ask_values $command $fields} values]} { return }
    destroy $w
    run $command {*}$values
}

# Asks a new value for one setting variable, stores it, then runs
# "vesk COMMAND" so that the core takes it up.
proc ::vesk::ops::ask_setting {name title label kind command} {
    set current [expr {[info exists ::$name] ? [set ::$name] : ""}]
    set fields [list [list $label $kind $current]]
    set w [ask $command $title $fields]
    $w.f.buttons.ok configure -command [list ::vesk::ops::ask_setting_ok $w $name $command $fields]
    return $w
}

proc ::vesk::ops::ask_setting_ok {w name command fields} {
    if {[catch {ask_values $command $fields} values]} { return }
    if {[catch {set ::$name [lindex $values 0]} error]} {
        message "can't set $name: $error"
        return
    }
    destroy $w
    run $command
}

# The dialogs of the commands that take values, by command name: title,
# a hint, and the fields {label kind default}.  A "defaults" script, when
# given, supplies the default values from the current state.
namespace eval ::vesk::ops {
    variable dialogs {
        move {
            title "Move selection" hint "Move the selection by this distance."
            fields {{X float 0} {Y float 0} {Z float 0}}
        }
        move_to {
            title "Move selection to" hint "Move the centre of the selection to this point."
            fields {{X float 0} {Y float 0} {Z float 0}}
            defaults {::vesk::ops::selection_vector get_selection_centre {0 0 0}}
        }
        rotate {
            title "Rotate selection" hint "Rotate the selection about the origin."
            fields {{{X degrees} float 0} {{Y degrees} float 0} {{Z degrees} float 0}}
        }
        rotate_about {
            title "Rotate selection about a point" hint "Rotate the selection about the given centre."
            fields {{{X degrees} float 0} {{Y degrees} float 0} {{Z degrees} float 0}
                    {{Centre X} float 0} {{Centre Y} float 0} {{Centre Z} float 0}}
            defaults {list 0 0 0 {*}[::vesk::ops::selection_vector get_selection_centre {0 0 0}]}
        }
        scale {
            title "Scale selection" hint "Scale the selection about its centre."
            fields {{{X factor} float 1} {{Y factor} float 1} {{Z factor} float 1}}
        }
        size_to {
            title "Size selection to" hint "Give the selection this size."
            fields {{Width float 1} {Height float 1} {Depth float 1}}
            defaults {::vesk::ops::selection_vector get_selection_size {1 1 1}}
        }
        object_explode {
            title "Explode" hint "Fragment the selected objects and move their surfaces apart."
            fields {{Distance float 0.1}}
        }
        set_texture_repeats {
            title "Texture repeats" hint "How often the texture repeats across the selected objects."
            fields {{{Repeat X} float 1} {{Repeat Y} float 1}}
        }
        set_texture {
            title "Set texture" hint "Texture numbers start at 1, in the order the textures were loaded."
            fields {{{Texture number} int 1}}
        }
        texture_set {
            title "Apply texture" hint "Give the selected objects and their children this texture."
            fields {{{Texture number} int 1}}
        }
        select_by_name {
            title "Select by name" hint "Select the objects with this name."
            fields {{Name string ""}}
        }
        unselect_by_name {
            title "Unselect by name" hint "Remove the objects with this name from the selection."
            fields {{Name string ""}}
        }
        add_text {
            title "Add text" hint "Add the text as a new object made from the font model."
            fields {{Text string ""}}
        }
        create_text {
            title "New text object" hint "Make a new object spelling the text."
            fields {{Text string ""}}
        }
        set_current_object_name {
            title "Object name" hint "The name of the current object."
            fields {{Name string ""}}
            defaults {::vesk::ops::current_object_property object_get_name}
        }
        set_current_object_url {
            title "Object URL" hint "The url of the current object."
            fields {{URL string ""}}
            defaults {::vesk::ops::current_object_property object_get_url}
        }
        set_current_object_data {
            title "Object data" hint "The data string of the current object."
            fields {{Data string ""}}
            defaults {::vesk::ops::current_object_property object_get_data}
        }
        execute {
            title "Run a system command" hint "Runs in the background through the shell."
            fields {{Command string ""}}
        }
        execute_surface_filter {
            title "Run a surface filter" hint "Runs a filter added by a plug-in on every selected surface."
            fields {{{Filter name} string ""}}
        }
    }
}

# The selection's centre or size from the core, or the fallback.
proc ::vesk::ops::selection_vector {query fallback} {
    set v [vesk $query]
    if {[catch {llength $v} n] || $n != 3} { return $fallback }
    foreach c $v {
        if {![string is double -strict $c]} { return $fallback }
    }
    return $v
}

# Opens the dialog of a command that takes values.
proc ::vesk::ops::ask_for {command} {
    variable dialogs
    if {![dict exists $dialogs $command]} {
        message "no dialog for \"$command\""
        return ""
    }
    set dialog [dict get $dialogs $command]
    set fields [dict get $dialog fields]
    if {[dict exists $dialog defaults]} {
        set values [uplevel #0 [dict get $dialog defaults]]
        set filled {}
        foreach field $fields value $values {
            if {$field eq ""} { break }
            lappend filled [lreplace $field 2 2 $value]
        }
        set fields $filled
    }
    return [ask $command [dict get $dialog title] $fields [dict get $dialog hint]]
}

# Asks one whole number, e.g. an object id.
proc ::vesk::ops::ask_int {command title label {default 1} {hint ""}} {
    return [ask $command $title [list [list $label int $default]] $hint]
}

# The id of the first selected object, or "".
proc ::vesk::ops::first_selected_object {} {
    set ids [vesk get_selected_objects]
    if {[catch {lindex $ids 0} id]} { return "" }
    return $id
}

# A text property of the first selected object, for a dialog's default.
proc ::vesk::ops::current_object_property {getter} {
    set id [first_selected_object]
    if {$id eq ""} { return [list ""] }
    return [list [vesk $getter $id]]
}

# Asks, unless questions are off, then runs the command.
proc ::vesk::ops::confirm {title question command args} {
    if {![no_questions]} {
        set answer [tk_messageBox -parent . -icon question -type okcancel -default cancel \
            -title $title -message $question]
        if {$answer ne "ok"} { return }
    }
    run $command {*}$args
}

# ---- object ids ----

# Asks for an object id (the first selected object by default) and runs
# the command with it.  With show set, the answer opens in a window.
proc ::vesk::ops::ask_object {command title {show 0}} {
    set w [ask_int $command $title "Object id" [first_selected_object] \
        "The first selected object is filled in; Tools > Inspect shows the ids of others."]
    if {$show} {
        $w.f.buttons.ok configure -command [list ::vesk::ops::ask_object_show $w $command $title]
    }
    return $w
}

proc ::vesk::ops::ask_object_show {w command title} {
    if {[catch {ask_values $command {{{Object id} int}}} values]} { return }
    set id [lindex $values 0]
    destroy $w
    show_text "$title $id" [run $command $id]
}

# Runs a query command and shows its answer in a window.
proc ::vesk::ops::show_result {title command args} {
    return [show_text $title [run $command {*}$args]]
}

# ---- text windows ----

# A read-only text window; returns its path.
proc ::vesk::ops::show_text {title text} {
    variable text_windows
    set w .text[incr text_windows]
    toplevel $w
    wm title $w $title
    set f [ttk::frame $w.f -padding 6]
    pack $f -fill both -expand 1
    text $f.t -width 80 -height 24 -wrap none -font TkFixedFont \
        -yscrollcommand [list $f.y set] -xscrollcommand [list $f.x set]
    ttk::scrollbar $f.y -orient vertical -command [list $f.t yview]
    ttk::scrollbar $f.x -orient horizontal -command [list $f.t xview]
    ttk::button $f.close -text Close -command [list destroy $w]
    grid $f.t $f.y -sticky nsew
    grid $f.x -sticky ew
    grid $f.close -sticky e -pady {6 0}
    grid rowconfigure $f 0 -weight 1
    grid columnconfigure $f 0 -weight 1
    if {$text eq ""} { set text "(nothing)" }
    $f.t insert end $text
    $f.t configure -state disabled
    bind $w <Escape> [list destroy $w]
    place_dialog $w
    return $w
}

proc ::vesk::ops::list_commands {} {
    show_result "VESK commands" list
}

# ---- about ----

proc ::vesk::ops::about {} {
    set w .about
    destroy $w
    toplevel $w
    wm title $w "About VESK"
    wm transient $w .
    wm resizable $w 0 0
    set version "VESK"
    if {[info exists ::vesk_version_string] && $::vesk_version_string ne ""} {
        set version $::vesk_version_string
    }
    set f [ttk::frame $w.f -padding 16]
    pack $f -fill both -expand 1
    ttk::label $f.name -text $version -font {-size 14 -weight bold}
    ttk::label $f.what -text "A polygon modeller"
    ttk::label $f.credits -style Hint.TLabel -justify center \
        -text "Models are trees of objects with their own vertices and surfaces.\nTcl [info patchlevel], Tk [package present Tk]"
    ttk::button $f.ok -text OK -command [list destroy $w]
    pack $f.name $f.what -pady {0 4}
    pack $f.credits -pady {4 12}
    pack $f.ok
    bind $w <Return> [list destroy $w]
    bind $w <Escape> [list destroy $w]
    place_dialog $w
    focus $f.ok
}
