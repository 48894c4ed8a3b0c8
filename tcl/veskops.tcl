# veskops.tcl - the operations behind the menus and tools: the look shared
# by every window (theme and fonts), calling the core, small dialogs that
# ask for values before a command runs, file dialogs, the file operations
# (new, open, save, import, export, render, quit), result windows, the
# Tcl console and the scripting socket.
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
        lwo      {{{Lightwave files} {.lwo .lws}} {{All files} *}}
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

# ---- recovering unsaved work ----

# Asked by the core at start-up when a VESK that stopped (a crash, a
# logout, a kill) left work that was never saved.  model is the work's
# file ("" when it was never saved), when the time it was kept and kind
# "autosave" or "emergency".  Returns recover, original or discard.
proc ::vesk::ops::offer_recovery {model when kind} {
    variable recovery_choice
    set w .recovery
    catch {destroy $w}
    update idletasks
    toplevel $w
    wm title $w "Recover unsaved work"
    if {[winfo ismapped .]} { wm transient $w . }
    set name [expr {$model eq "" ? "an untitled model" : [file tail $model]}]
    set how [expr {$kind eq "emergency" ? "kept as VESK was stopping" : "autosaved"}]
    ttk::frame $w.f -padding 12
    ttk::label $w.f.icon -image ::tk::icons::question
    ttk::label $w.f.msg -text "VESK stopped before some of your work was saved." -font TkHeadingFont
    set detail "Your changes to $name were $how at $when.\n\n"
    append detail "Recover: open them, so that you can look at them and save them.\n"
    if {$model ne ""} {
        append detail "Open original: open $name as it was last saved, and delete the changes.\n"
    }
    append detail "Discard: delete the changes.\n\nThe file $name itself is not changed by any of these."
    ttk::label $w.f.detail -text $detail -justify left -wraplength 460
    ttk::frame $w.f.buttons
    ttk::button $w.f.buttons.recover -text "Recover" -default active \
        -command [list set ::vesk::ops::recovery_choice recover]
    ttk::button $w.f.buttons.original -text "Open original" \
        -command [list set ::vesk::ops::recovery_choice original]
    ttk::button $w.f.buttons.discard -text "Discard" \
        -command [list set ::vesk::ops::recovery_choice discard]
    if {$model eq "" || ![file exists $model]} { $w.f.buttons.original state disabled }
    grid $w.f.icon $w.f.msg -sticky w -padx 4 -pady 4
    grid ^ $w.f.detail -sticky w -padx 4
    grid $w.f.buttons - -sticky e -pady {12 0}
    pack $w.f.buttons.recover $w.f.buttons.original $w.f.buttons.discard -side left -padx 4
    pack $w.f -fill both -expand 1
    bind $w <Return> [list $w.f.buttons.recover invoke]
    wm protocol $w WM_DELETE_WINDOW [list set ::vesk::ops::recovery_choice recover]
    place_dialog $w
    set recovery_choice ""
    catch {grab $w}
    focus $w.f.buttons.recover
    vwait ::vesk::ops::recovery_choice
    catch {grab release $w}
    destroy $w
    return $recovery_choice
}

# Runs a command that throws the model away (Clear all), after the
# unsaved-changes question (which asks for it too) or, with nothing
# unsaved, after a plain confirmation.
proc ::vesk::ops::discard_and_run {title question command args} {
    if {[unsaved]} {
        if {![may_discard $title]} { return }
        run $command {*}$args
        return
    }
    confirm $title $question $command {*}$args
}

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
    set target [ui_settings_file]
    set temp $target.new
    if {[catch {
        set fd [open $temp w]
        foreach name $ui_settings {
            if {[info exists ::$name]} { puts $fd [list $name [set ::$name]] }
        }
        close $fd
        file rename -force $temp $target
    } error]} {
        catch {close $fd}
        catch {file delete $temp}
        message "interface settings could not be saved: $error"
    }
}

# ---- recent files ----

# The last ten model files opened or saved, newest first, kept one path
# per line in "veskrecent.txt" beside the preferences file.
namespace eval ::vesk::ops {
    variable recent {}
    variable recent_loaded 0
    variable recent_limit 10
}

proc ::vesk::ops::recent_file {} {
    foreach name {USERPROFILE HOME} {
        if {[info exists ::env($name)] && $::env($name) ne ""} {
            return [file join $::env($name) veskrecent.txt]
        }
    }
    return veskrecent.txt
}

# Reads the list once; an unreadable or odd file gives what of it makes
# sense (lines that are not absolute paths are skipped).
proc ::vesk::ops::recent_load {} {
    variable recent
    variable recent_loaded
    variable recent_limit
    if {$recent_loaded} { return }
    set recent_loaded 1
    set recent {}
    if {[catch {open [recent_file] r} fd]} { return }
    fconfigure $fd -encoding utf-8
    set lines {}
    catch {set lines [split [read $fd 65536] \n]}
    close $fd
    foreach line $lines {
        set path [string trimright $line \r]
        if {$path eq "" || [file pathtype $path] ne "absolute" || $path in $recent} { continue }
        lappend recent $path
        if {[llength $recent] >= $recent_limit} { break }
    }
}

# Writes the list beside a temporary copy first, so that a full disk
# leaves the old list whole.
proc ::vesk::ops::recent_save {} {
    variable recent
    set target [recent_file]
    set temp $target.new
    if {[catch {
        set fd [open $temp w]
        fconfigure $fd -encoding utf-8
        puts -nonewline $fd [join $recent \n]
        if {[llength $recent]} { puts $fd "" }
        close $fd
        file rename -force $temp $target
    } error]} {
        catch {close $fd}
        catch {file delete $temp}
        message "the list of recent files could not be saved: $error"
    }
}

proc ::vesk::ops::recent_add {path} {
    variable recent
    variable recent_limit
    if {$path eq "" || [string first \n $path] >= 0} { return }
    recent_load
    set path [file normalize $path]
    set recent [linsert [lsearch -all -inline -not -exact $recent $path] 0 $path]
    set recent [lrange $recent 0 [expr {$recent_limit - 1}]]
    recent_save
}

proc ::vesk::ops::recent_remove {path} {
    variable recent
    recent_load
    set recent [lsearch -all -inline -not -exact $recent $path]
    recent_save
}

proc ::vesk::ops::recent_list {} {
    variable recent
    recent_load
    return $recent
}

# The model's file changed (an open or a save): it heads the list.
proc ::vesk::ops::recent_note {args} {
    set file [current_file]
    if {$file ne "" && [file isfile $file]} { recent_add $file }
}

# Fills File > Open recent each time it opens.
proc ::vesk::ops::recent_fill {m} {
    $m delete 0 end
    set paths [recent_list]
    if {[llength $paths] == 0} {
        $m add command -label "(no recent files)" -state disabled
        return
    }
    set n 0
    foreach path $paths {
        incr n
        set label "$n [file tail $path]  \u2014  [file dirname $path]"
        $m add command -label $label -underline 0 -command [list ::vesk::ops::open_recent $path]
    }
    $m add separator
    $m add command -label "Clear the list" -command {
        set ::vesk::ops::recent {}
        ::vesk::ops::recent_save
    }
}

# A file of the list that is gone is said so and dropped from the list;
# the model stays as it is.
proc ::vesk::ops::open_recent {path} {
    if {![file isfile $path]} {
        recent_remove $path
        error_box "Open recent" "The file '$path' no longer exists." "It has been removed from the list of recent files."
        return
    }
    if {![may_discard "Open model"]} { return }
    run open_vk $path
}

proc ::vesk::ops::error_box {title message {detail ""}} {
    if {[no_questions]} {
        message "$title: $message $detail"
        return
    }
    tk_messageBox -parent . -icon error -type ok -title $title -message $message -detail $detail
}

# Files dropped on the main window (where Tk has a drop package): the
# first model file is opened; anything else is refused with a message and
# changes nothing.
proc ::vesk::ops::drop_files {files} {
    foreach path $files {
        if {[string tolower [file extension $path]] eq ".vk" && [file isfile $path]} {
            if {![may_discard "Open model"]} { return }
            run open_vk $path
            return
        }
    }
    set names [join [lmap f $files {file tail $f}] ", "]
    error_box "Drop" "Only VESK model files (.vk) can be dropped here." "Nothing was opened: $names"
}

# The main window and the view area take dropped files (through Debian's
# tkdnd where it is installed; without it nothing is registered and
# nothing is said).  tkdnd looks the drop script up on the very window
# under the pointer, so each of them has its own binding.
proc ::vesk::ops::drop_windows {} {
    set windows [list .]
    foreach w {.views .views.xyframe.f.win .views.zyframe.f.win .views.xzframe.f.win .views.xyzframe.f.win} {
        if {[winfo exists $w]} { lappend windows $w }
    }
    return $windows
}

proc ::vesk::ops::enable_drop {} {
    variable drop_enabled 0
    if {[catch {package require tkdnd}]} { return 0 }
    foreach w [drop_windows] {
        if {[catch {
            tkdnd::drop_target register $w DND_Files
            bind $w <<Drop:DND_Files>> {::vesk::ops::on_drop %D %A}
        }]} continue
        set drop_enabled 1
    }
    return $drop_enabled
}

# The bound handler: the drop is over at once (the program the files come
# from is not kept waiting by a question or a message box), and the files
# are opened from the event loop just after.  Returns the action, as
# tkdnd wants.
proc ::vesk::ops::on_drop {files action} {
    after idle [list ::vesk::ops::drop_files $files]
    return $action
}

# Returns 1 when the model was written.
proc ::vesk::ops::save_model {} {
    set file [current_file]
    if {$file eq ""} { return [save_model_as] }
    return [expr {[run save_vk $file] eq "1"}]
}

proc ::vesk::ops::save_model_as {} {
    variable filetypes
    set file [choose_save_file "Save the model as" $filetypes(vk) .vk]
    if {$file eq ""} { return 0 }
    if {[run save_vk $file] ne "1"} { return 0 }
    set_current_file $file
    return 1
}

proc ::vesk::ops::save_selection {} {
    with_save_file "Save the selection as" vk save_selection_vk
}

# Evaluates the render command of the preferences.
proc ::vesk::ops::render {} {
    if {![info exists ::prefs_render_command] || [string trim $::prefs_render_command] eq ""} {
        message "render: no render command is set in the preferences"
        return
    }
    message "rendering..."
    if {[catch {uplevel #0 $::prefs_render_command} error]} {
        message "render command failed: $error"
        return
    }
    message "render command started"
}

proc ::vesk::ops::quit {} {
    if {![may_discard "Quit VESK"]} { return }
    socket_stop 1
    exit
}

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

# ---- Tcl console ----

# Tk's console where the platform has one, else a small window that
# evaluates what is typed at global level.
proc ::vesk::ops::console {} {
    if {[info commands ::console] ne ""} {
        ::console show
        return
    }
    set w .console
    if {[winfo exists $w]} {
        wm deiconify $w
        raise $w
        focus $w.f.entry
        return
    }
    variable console_history {}
    variable console_position 0
    variable console_line ""
    toplevel $w
    wm title $w "VESK Tcl console"
    set f [ttk::frame $w.f -padding 6]
    pack $f -fill both -expand 1
    text $f.out -width 80 -height 20 -wrap word -font TkFixedFont -yscrollcommand [list $f.y set]
    ttk::scrollbar $f.y -orient vertical -command [list $f.out yview]
    ttk::entry $f.entry -font TkFixedFont -textvariable ::vesk::ops::console_line
    grid $f.out $f.y -sticky nsew
    grid $f.entry - -sticky ew -pady {6 0}
    grid rowconfigure $f 0 -weight 1
    grid columnconfigure $f 0 -weight 1
    $f.out tag configure command -foreground #2a5db0
    $f.out tag configure error -foreground #b02a2a
    $f.out insert end "Type Tcl commands; \"vesk list\" lists the internal commands.\n"
    $f.out configure -state disabled
    bind $f.entry <Return> ::vesk::ops::console_eval
    bind $f.entry <Up> {::vesk::ops::console_recall -1}
    bind $f.entry <Down> {::vesk::ops::console_recall 1}
    focus $f.entry
}

proc ::vesk::ops::console_eval {} {
    variable console_line
    variable console_history
    variable console_position
    set command $console_line
    set console_line ""
    if {[string trim $command] eq ""} { return }
    lappend console_history $command
    set console_position [llength $console_history]
    set tag {}
    if {[catch {uplevel #0 $command} result]} { set tag error }
    set out .console.f.out
    if {![winfo exists $out]} { return }
    $out configure -state normal
    $out insert end "% $command\n" command
    if {$result ne ""} { $out insert end "$result\n" $tag }
    $out configure -state disabled
    $out see end
}

proc ::vesk::ops::console_recall {step} {
    variable console_history
    variable console_position
    variable console_line
    set n [llength $console_history]
    set console_position [expr {max(0, min($n, $console_position + $step))}]
    set console_line [lindex $console_history $console_position]
    .console.f.entry icursor end
}

# ---- scripting socket ----
#
# Off until the user turns it on.  It listens on the loopback address only.
# A client first sends the token (made anew each time the socket is turned
# on and kept in a file only the user can read, see token_file), then Tcl
# commands, one per line (a command may span lines until it is complete);
# the token is answered "ok", each command with one line: the result, or
# "error: " and the message.  Newlines in the answer are sent as \n and
# backslashes as \\, so that one answer is always one line.  A first line
# that looks like HTTP closes the connection at once, so a web page can't
# reach the socket.  Commands run in a safe interpreter that has `vesk`
# and harmless Tcl only (no exec, open, socket, file, load, source or
# exit), and there "vesk execute", "vesk plugin_load" and "vesk
# plugin_load_all" are refused, unless the user chose full access.

# The directory of the user's VESK files (the preferences file's).
proc ::vesk::ops::user_dir {} {
    foreach name {USERPROFILE HOME} {
        if {[info exists ::env($name)] && $::env($name) ne ""} { return $::env($name) }
    }
    return [pwd]
}

proc ::vesk::ops::token_file {} {
    return [file join [user_dir] vesk-socket-token]
}

# A new random token, written to the token file (readable by the user
# alone).  Returns the token, or "" when it could not be made.
proc ::vesk::ops::new_token {} {
    if {[catch {
        set random [open /dev/urandom rb]
        binary scan [read $random 16] H* token
        close $random
        set path [token_file]
        file delete -force $path
        set fd [open $path {WRONLY CREAT EXCL} 0600]
        puts $fd $token
        close $fd
    } error]} {
        message "scripting socket: can't write the token file [token_file]: $error"
        return ""
    }
    return $token
}

# The interpreter socket commands run in: safe, with vesk.
proc ::vesk::ops::safe_interp {} {
    variable socket_safe
    if {$socket_safe ne "" && [interp exists $socket_safe]} { return $socket_safe }
    set socket_safe [interp create -safe]
    interp alias $socket_safe vesk {} ::vesk::ops::socket_vesk
    return $socket_safe
}

# The vesk command as the safe interpreter sees it.
proc ::vesk::ops::socket_vesk {args} {
    variable socket_full_access
    set name [lindex $args 0]
    if {!$socket_full_access && $name in {execute plugin_load plugin_load_all}} {
        return -code error "\"$name\" is refused over the scripting socket: it runs other programs or code.\
            Allow full access in Tools > Scripting socket settings to use it."
    }
    return [vesk {*}$args]
}

# Runs one complete command of a client: in the safe interpreter with a
# time limit, or at global level with full access.  Returns the answer.
proc ::vesk::ops::socket_eval {script} {
    variable socket_full_access
    variable socket_time_limit
    if {$socket_full_access} {
        set code [catch {uplevel #0 $script} result]
    } else {
        set safe [safe_interp]
        interp limit $safe time -seconds [expr {[clock seconds] + $socket_time_limit}]
        set code [catch {interp eval $safe $script} result]
        interp limit $safe time -seconds {}
    }
    # Only an error is reported as one; return, break and continue at the
    # top of a command answer like a normal result.
    if {$code == 1} { return "error: $result" }
    return $result
}

# Whether a line is the start of an HTTP request or one of its headers.
proc ::vesk::ops::looks_like_http {line} {
    if {[regexp {^[A-Z]+ \S+ HTTP/\d} $line]} { return 1 }
    return [regexp {^(GET|POST|PUT|HEAD|OPTIONS|DELETE|PATCH|CONNECT|TRACE) } $line]
}

# The settings dialog: on or off, the port, the token and the access.
proc ::vesk::ops::socket_dialog {} {
    set w .socketsettings
    if {[winfo exists $w]} {
        raise $w
        return
    }
    toplevel $w
    wm title $w "Scripting socket"
    set f [ttk::frame $w.f -padding 12]
    ttk::checkbutton $f.on -text "Listen for commands on 127.0.0.1" -variable ::vesk::ops::socket_on \
        -command ::vesk::ops::socket_toggle
    ttk::label $f.portlabel -text "Port (in the preferences):"
    ttk::label $f.port -textvariable ::tcl_socket_port
    ttk::label $f.tokenlabel -text "Token (a client sends it first):"
    ttk::entry $f.token -textvariable ::vesk::ops::socket_token -width 34 -state readonly
    ttk::button $f.copy -text "Copy" -command {
        clipboard clear
        clipboard append $::vesk::ops::socket_token
        ::vesk::ops::message "token copied"
    }
    ttk::checkbutton $f.full -text "Allow full Tcl access" -variable ::vesk::ops::socket_full_access
    ttk::label $f.warning -wraplength 380 -justify left -text \
        "With full access a client can run programs and read, change or delete your files, as you can. Leave it off unless you trust every program on this computer."
    ttk::button $f.close -text "Close" -command [list destroy $w]
    grid $f.on - - -sticky w
    grid $f.portlabel $f.port - -sticky w -pady {8 0}
    grid $f.tokenlabel $f.token $f.copy -sticky w -pady {4 0}
    grid $f.full - - -sticky w -pady {8 0}
    grid $f.warning - - -sticky w
    grid $f.close - - -sticky e -pady {12 0}
    pack $f -fill both -expand 1
    place_dialog $w
}

proc ::vesk::ops::socket_toggle {} {
    variable socket_on
    if {$socket_on} { socket_start } else { socket_stop }
}

# Returns 1 when the server listens.
proc ::vesk::ops::socket_start {} {
    variable server
    variable socket_on
    if {$server ne ""} { return 1 }
    set port [expr {[info exists ::tcl_socket_port] ? $::tcl_socket_port : ""}]
    if {![string is integer -strict $port] || $port < 1 || $port > 65535} {
        set socket_on 0
        message "scripting socket: \"$port\" is not a port number (1-65535) - see the preferences"
        return 0
    }
    # The token is in its file before anyone can connect.
    set token [new_token]
    if {$token eq ""} {
        set socket_on 0
        return 0
    }
    if {[catch {socket -server ::vesk::ops::socket_accept -myaddr 127.0.0.1 $port} channel]} {
        catch {file delete [token_file]}
        set socket_on 0
        if {[string match -nocase "*in use*" $channel]} {
            message "scripting socket: port $port is already in use - choose another port in the preferences"
        } else {
            message "scripting socket: can't listen on 127.0.0.1:$port: $channel"
        }
        return 0
    }
    variable socket_token $token
    set server $channel
    set socket_on 1
    message "scripting socket listening on 127.0.0.1:$port"
    return 1
}

# Closes the server and every client.
proc ::vesk::ops::socket_stop {{quiet 0}} {
    variable server
    variable socket_on
    variable clients
    variable socket_token
    foreach channel [array names clients] { socket_close $channel }
    if {$server ne ""} { catch {close $server} }
    if {$server ne ""} { catch {file delete [token_file]} }
    set server ""
    set socket_token ""
    set socket_on 0
    if {!$quiet} { message "scripting socket off" }
}

proc ::vesk::ops::socket_accept {channel address port} {
    variable clients
    variable authorised
    fconfigure $channel -blocking 0 -buffering line -translation {auto lf} -encoding utf-8
    set clients($channel) ""
    set authorised($channel) 0
    fileevent $channel readable [list ::vesk::ops::socket_read $channel]
}

proc ::vesk::ops::socket_close {channel} {
    variable clients
    variable authorised
    unset -nocomplain clients($channel) authorised($channel)
    catch {close $channel}
}

# One answer as one line.
proc ::vesk::ops::one_line {text} {
    return [string map [list \\ \\\\ \n \\n \r \\r] $text]
}

proc ::vesk::ops::socket_read {channel} {
    variable clients
    variable socket_input_limit
    if {![info exists clients($channel)]} { return }
    if {[catch {gets $channel line} count]} {
        socket_close $channel
        return
    }
    if {$count < 0} {
        if {[eof $channel]} {
            socket_close $channel
        } elseif {[chan pending input $channel] > $socket_input_limit} {
            socket_reply $channel "error: line too long"
            socket_close $channel
        }
        return
    }
    if {![authorise $channel $line]} { return }
    append clients($channel) $line "\n"
    if {[string length $clients($channel)] > $socket_input_limit} {
        socket_reply $channel "error: command too long"
        socket_close $channel
        return
    }
    if {![info complete $clients($channel)]} { return }
    set script $clients($channel)
    set clients($channel) ""
    socket_reply $channel [one_line [socket_eval $script]]
}

# The first line of a client must be the token.  Returns 1 when the line
# is a command to run; 0 when it was the token (answered "ok") or the
# client was refused and closed.
proc ::vesk::ops::authorise {channel line} {
    variable authorised
    variable socket_token
    if {$authorised($channel)} { return 1 }
    if {[looks_like_http $line]} {
        socket_close $channel
        return 0
    }
    if {$socket_token ne "" && $line eq $socket_token} {
        set authorised($channel) 1
        socket_reply $channel ok
        return 0
    }
    socket_reply $channel "error: not authorised - send the token of Tools > Scripting socket settings first"
    socket_close $channel
    return 0
}

proc ::vesk::ops::socket_reply {channel text} {
    variable clients
    # The command may have closed the connection or the whole server.
    if {![info exists clients($channel)]} { return }
    if {[catch {puts $channel $text}]} { socket_close $channel }
}

::vesk::ops::setup_look

# ---- rendering with POV-Ray ----

namespace eval ::vesk::ops {
    # The render under way: its channel, its files, the last output.
    variable povray [dict create]
}

# Where the scene and the picture go: POV-Ray may write only below /tmp
# and the current directory.
proc ::vesk::ops::povray_dir {} {
    set base /tmp
    if {[info exists ::env(TMPDIR)] && [file isdirectory $::env(TMPDIR)]} { set base $::env(TMPDIR) }
    return [file join $base vesk_povray_[pid]]
}

# Renders the model as the 3D view shows it with POV-Ray, in the
# background so that the interface stays alive; the status line shows the
# progress and the picture opens in a window of its own when done.
proc ::vesk::ops::render_povray {} {
    variable povray
    if {[dict exists $povray channel]} {
        message "POV-Ray is still rendering the last picture"
        return
    }
    set program [auto_execok povray]
    if {$program eq ""} {
        error_box "Render with POV-Ray" "POV-Ray is not installed." \
            "Install the Debian package \"povray\" (apt-get install povray) and try again."
        return
    }
    set view [::vesk::view::window_of xyz]
    set width 320
    set height 240
    if {[winfo exists $view] && [winfo width $view] > 1 && [winfo height $view] > 1} {
        set width [winfo width $view]
        set height [winfo height $view]
    }
    set dir [povray_dir]
    if {[catch {file mkdir $dir} error]} {
        error_box "Render with POV-Ray" "Can't make the folder for the picture." $error
        return
    }
    set pov [file join $dir scene.pov]
    set picture [file join $dir scene.png]
    file delete -force $picture
    if {[run write_POV $pov] ne "1"} {
        message "render: can't write the POV-Ray file $pov - see the console"
        return
    }
    set command [list {*}$program +I$pov +O$picture +W$width +H$height -D +FN +V]
    if {[catch {open |[list {*}$command 2>@1] r} channel]} {
        error_box "Render with POV-Ray" "Can't start POV-Ray." $channel
        return
    }
    fconfigure $channel -blocking 0 -translation binary
    set povray [dict create channel $channel picture $picture output ""]
    fileevent $channel readable [list ::vesk::ops::povray_output $channel]
    message "rendering with POV-Ray (${width}x$height)..."
}

# POV-Ray's output: "Rendered n of m pixels" lines become the progress
# on the status line; at the end the picture is shown.
proc ::vesk::ops::povray_output {channel} {
    variable povray
    set text [read $channel]
    dict append povray output $text
    # Only the tail is kept, for the message if the render fails.
    dict set povray output [string range [dict get $povray output] end-4000 end]
    set done {}
    foreach {all n m} [regexp -all -inline {Rendered (\d+) of (\d+) pixels} $text] {
        set done [expr {$m > 0 ? 100 * $n / $m : 0}]
    }
    if {$done ne ""} { message "rendering with POV-Ray... $done%" }
    if {![eof $channel]} { return }
    fconfigure $channel -blocking 1
    set failed [catch {close $channel} error]
    set picture [dict get $povray picture]
    set output [dict get $povray output]
    set povray [dict create]
    if {![file exists $picture]} {
        set lines [lrange [split [string map {"\r" "\n"} $output] "\n"] end-12 end]
        error_box "Render with POV-Ray" "POV-Ray made no picture." [join $lines "\n"]
        return
    }
    if {$failed} { message "POV-Ray ended with a message: $error" }
    povray_show $picture
}

# The picture in a window of its own; a new render replaces it.
proc ::vesk::ops::povray_show {picture} {
    set w .povray_render
    destroy $w
    catch {image delete ::vesk::ops::povray_image}
    if {[catch {image create photo ::vesk::ops::povray_image -file $picture} error]} {
        error_box "Render with POV-Ray" "Can't show the picture $picture." $error
        return
    }
    toplevel $w
    wm title $w "POV-Ray render"
    label $w.picture -image ::vesk::ops::povray_image -borderwidth 0
    label $w.file -text $picture -anchor w
    button $w.close -text Close -command [list destroy $w]
    pack $w.picture -side top
    pack $w.file -side top -fill x
    pack $w.close -side right -padx 4 -pady 4
    bind $w <Destroy> {if {"%W" eq ".povray_render"} {catch {image delete ::vesk::ops::povray_image}}}
    message "rendered with POV-Ray: $picture"
}
