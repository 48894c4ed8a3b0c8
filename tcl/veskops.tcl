# veskops.tcl - the operations behind the menus and tools: the look shared
# by every window (theme and fonts), calling the core, file dialogs and
# the file operations (new, open, save, import, export, quit).  The rest
# comes from tcl/ops, a file each: recovering unsaved work, interface
# settings, recent and dropped files, the small dialogs and result
# windows, the Tcl console, the scripting socket and rendering.
#
# The core calls the global procedures get_opentexturename and
# get_savefilename defined here.  Every dialog is non-modal: it calls its
# command when the user presses OK, so nothing here waits in a local event
# loop except the standard file choosers and the unsaved-changes question.

namespace eval ::vesk::ops {
    # Number of windows opened by show_text, for unique widget names.
    variable text_windows 0
    # Scripting socket: the checkbutton variable, the server channel and
    # the partial input of each client.
    variable socket_on 0
    variable server ""
    variable clients
    array set clients {}
    # Whether each client has sent the token yet.
    variable authorised
    array set authorised {}
    # The token a client sends as its first line, made anew each time the
    # socket is turned on; the safe interpreter commands run in; and the
    # user's explicit choice of full Tcl access.
    variable socket_token ""
    variable socket_safe ""
    variable socket_full_access 0
    # How long one command may run in the safe interpreter.
    variable socket_time_limit 30
    # A client that sends more than this without completing a command is
    # cut off, so that a stray sender cannot grow memory without bound.
    variable socket_input_limit 1048576

    # File types of the dialogs, by kind.
    variable filetypes
    array set filetypes {
        vk       {{{VESK files} {.vk}} {{All files} *}}
        3ds      {{{3D Studio files} {.3ds}} {{All files} *}}
        dxf      {{{DXF files} {.dxf}} {{All files} *}}
        tri      {{{Triangle files} {.tri}} {{All files} *}}
        lwo      {{{Lightwave files} {.lwo .lwob .lws}} {{All files} *}}
        wrl      {{{VRML files} {.wrl}} {{All files} *}}
        iv       {{{Inventor files} {.iv}} {{All files} *}}
        svg      {{{SVG drawings} {.svg}} {{All files} *}}
        pov      {{{POV-Ray files} {.pov}} {{All files} *}}
        rib      {{{RenderMan files} {.rib}} {{All files} *}}
        dive     {{{DIVE worlds} {.vr}} {{All files} *}}
        massive  {{{MASSIVE geometry text} {.massive}} {{All files} *}}
        dvs      {{{DVS geometry text} {.dvs}} {{All files} *}}
        image    {{{Image files} {.gif .rgb .bmp}} {{All files} *}}
        plugin   {{{Plug-in libraries} {.so}} {{All files} *}}
        tclplugin {{{Tcl plug-ins} {.tcl}} {{All files} *}}
        any      {{{All files} *}}
    }
}

# ---- look ----

# Returns the font description when its family is installed, else "".
proc ::vesk::ops::usable_font {description} {
    if {[catch {lindex $description 0} family] || $family eq ""} { return "" }
    if {[lsearch -exact -nocase [font families] $family] < 0} { return "" }
    if {[catch {font actual $description}]} { return "" }
    return $description
}

# Copies the attributes of a font description onto one of Tk's named fonts.
proc ::vesk::ops::apply_font {named description} {
    if {$description eq ""} { return }
    font configure $named {*}[font actual $description]
}

# The preference fonts, each only when its family exists on this machine;
# otherwise Tk's own default fonts stay.
proc ::vesk::ops::apply_fonts {} {
    set main ""
    set menu ""
    if {[info exists ::prefs_font_main]} { set main [usable_font $::prefs_font_main] }
    if {[info exists ::prefs_font_menu]} { set menu [usable_font $::prefs_font_menu] }
    apply_font TkDefaultFont $main
    apply_font TkTextFont $main
    apply_font TkMenuFont $menu
}

# A current theme and the fonts.
proc ::vesk::ops::setup_look {} {
    foreach theme {clam alt} {
        if {[lsearch -exact [ttk::style theme names] $theme] >= 0} {
            ttk::style theme use $theme
            break
        }
    }
    apply_fonts

    # Classic widgets (menus, canvases, text) take the theme's colours.
    set bg [ttk::style lookup . -background]
    set fg [ttk::style lookup . -foreground]
    set selbg [ttk::style lookup . -selectbackground focus]
    if {$bg eq ""} { set bg #dcdad5 }
    if {$fg eq ""} { set fg black }
    if {$selbg eq ""} { set selbg #4a6984 }
    . configure -background $bg
    option add *Menu.background $bg
    option add *Menu.foreground $fg
    option add *Menu.activeBackground $selbg
    option add *Menu.activeForeground white
    option add *Menu.relief solid
    option add *Menu.activeBorderWidth 0
    option add *Menu.borderWidth 1
    option add *Menu.tearOff 0
    option add *Toplevel.background $bg
    option add *Canvas.background $bg
    option add *Canvas.highlightThickness 0
    option add *Text.background white
    option add *Text.relief flat
    option add *Text.highlightThickness 0

    ttk::style configure Hint.TLabel -foreground #555555
    ttk::style configure Toolbutton -padding {6 2} -anchor w
    # The chosen tool stands out clearly from the others.
    ttk::style map Toolbutton \
        -background [list selected $selbg pressed #bab5ab active #eeebe7] \
        -foreground [list selected white] \
        -lightcolor [list selected $selbg pressed #bab5ab] \
        -darkcolor [list selected $selbg pressed #bab5ab] \
        -relief [list selected flat pressed sunken active raised]
}

# ---- calling the core ----

# Shows a message on the status line (or on stdout before it exists).
proc ::vesk::ops::message {text} {
    if {[info commands ::display_message] ne ""} {
        ::display_message $text
    } else {
        puts $text
    }
}

# Runs one internal command; its answer is returned.  A dispatch failure
# that the core only reports in its answer is shown on the status line.
proc ::vesk::ops::run {args} {
    set result [vesk {*}$args]
    if {$result eq "command not found" || [string match "incorrect number of args*" $result]} {
        message "[lindex $args 0]: $result"
    }
    return $result
}

proc ::vesk::ops::no_questions {} {
    return [expr {[info exists ::vesk_no_questions] && $::vesk_no_questions eq "1"}]
}

proc ::vesk::ops::unsaved {} {
    return [expr {[info exists ::unsaved_changes] && [string is true -strict $::unsaved_changes]}]
}

# ---- file dialogs ----

# Converts the core's filter text "{ { Description} { .a .b } } ..." into a
# -filetypes list {{Description {.a .b}} ...}; anything unreadable gives
# the all-files filter alone.
proc ::vesk::ops::filters_to_filetypes {filters} {
    set result {}
    if {[catch {llength $filters}]} { return {{{All files} *}} }
    foreach pair $filters {
        if {[catch {llength $pair} n] || $n != 2} { continue }
        set description [string trim [lindex $pair 0]]
        if {[catch {lmap p [lindex $pair 1] {string trim $p}} patterns]} { continue }
        if {$description eq "" || [llength $patterns] == 0} { continue }
        lappend result [list $description $patterns]
    }
    if {[llength $result] == 0} { return {{{All files} *}} }
    return $result
}

# The parent of a dialog: the main window when it is mapped.
proc ::vesk::ops::dialog_parent {} {
    set w [focus]
    if {$w ne "" && [winfo exists $w]} { return [winfo toplevel $w] }
    return .
}

# Centres a new dialog over the main window.
proc ::vesk::ops::place_dialog {w} {
    if {![winfo ismapped .]} { return }
    catch {::tk::PlaceWindow $w widget .}
}

proc ::vesk::ops::choose_open_file {title filetypes} {
    return [tk_getOpenFile -parent [dialog_parent] -title $title -filetypes $filetypes]
}

proc ::vesk::ops::choose_save_file {title filetypes {extension ""}} {
    set options [list -parent [dialog_parent] -title $title -filetypes $filetypes]
    if {$extension ne ""} { lappend options -defaultextension $extension }
    return [tk_getSaveFile {*}$options]
}

# Open-file dialog for the core (textures, background images, plug-ins).
proc ::get_opentexturename {title filters} {
    return [::vesk::ops::choose_open_file $title [::vesk::ops::filters_to_filetypes $filters]]
}

# Save-file dialog for the core and plug-in exporters.
proc ::get_savefilename {title filters} {
    return [::vesk::ops::choose_save_file $title [::vesk::ops::filters_to_filetypes $filters]]
}

# Asks for a file to read, then runs "vesk COMMAND FILE ARGS...".
proc ::vesk::ops::with_open_file {title kind command args} {
    variable filetypes
    set file [choose_open_file $title $filetypes($kind)]
    if {$file eq ""} { return "" }
    return [run $command $file {*}$args]
}

# Asks for a file to write, then runs "vesk COMMAND FILE ARGS...".
proc ::vesk::ops::with_save_file {title kind command args} {
    variable filetypes
    set extension [lindex $filetypes($kind) 0 1 0]
    if {$extension eq "*"} { set extension "" }
    set file [choose_save_file $title $filetypes($kind) $extension]
    if {$file eq ""} { return "" }
    return [run $command $file {*}$args]
}

# ---- the model file ----

proc ::vesk::ops::current_file {} {
    if {[info exists ::current_file_name]} { return $::current_file_name }
    return ""
}

proc ::vesk::ops::set_current_file {path} {
    set ::current_file_name $path
    if {[info commands ::sync_ui] ne ""} { ::sync_ui }
}

# Before the model is thrown away: 1 to go on, 0 to stop.  Offers to save.
proc ::vesk::ops::may_discard {action} {
    if {![unsaved] || [no_questions]} { return 1 }
    set answer [tk_messageBox -parent . -icon warning -type yesnocancel -default yes \
        -title $action -message "The model has unsaved changes." \
        -detail "Save them before you go on?"]
    switch -- $answer {
        yes { return [expr {[save_model] && ![unsaved]}] }
        no { return 1 }
        default { return 0 }
    }
}

# An empty model with no file: nothing to save, so Quit asks nothing.
proc ::vesk::ops::new_model {} {
    if {![may_discard "New model"]} { return }
    run new_model
}

# The core reads the whole file before it replaces the model; a file that
# is not a model, is damaged or is missing leaves everything as it was,
# and the core names the file and clears unsaved_changes only on success.
proc ::vesk::ops::open_model {} {
    variable filetypes
    if {![may_discard "Open model"]} { return }
    set file [choose_open_file "Open a VESK model" $filetypes(vk)]
    if {$file eq ""} { return }
    run open_vk $file
}

# Adds the objects of a model file to the one being edited, as one step
# that undo takes back.
proc ::vesk::ops::merge_model {} {
    with_open_file "Merge a VESK model" vk merge_vk
}

# Goes back to the model's file as it was last saved.
proc ::vesk::ops::revert_model {} {
    if {[current_file] ne "" && [unsaved] && ![no_questions]} {
        set answer [tk_messageBox -parent . -icon warning -type okcancel -default cancel \
            -title "Revert to saved" -message "Discard your changes?" \
            -detail "The model goes back to [file tail [current_file]] as it was last saved."]
        if {$answer ne "ok"} { return }
    }
    run revert_vk
}

# Opens the backup the last save kept (the file name followed by ~) in
# place of the model; saving then puts it back into the model's file.
proc ::vesk::ops::open_backup {} {
    if {[current_file] ne "" && ![may_discard "Open backup"]} { return }
    run open_backup_vk
}

# Writes text (UTF-8) to target through a temporary file beside it, so
# that a full disk leaves the old file whole; a failure is said in words
# naming what could not be saved.
proc ::vesk::ops::write_file_replacing {target text what} {
    set temp $target.new
    if {[catch {
        set fd [open $temp w]
        fconfigure $fd -encoding utf-8
        puts -nonewline $fd $text
        close $fd
        file rename -force $temp $target
    } error]} {
        catch {close $fd}
        catch {file delete $temp}
        message "$what could not be saved: $error"
    }
}

# ---- the other parts ----

# Each concern of the operations has a file of its own under tcl/ops.
foreach part {recovery settings recent dialogs console socket render} {
    source [file join [file dirname [info script]] ops $part.tcl]
}
unset part
