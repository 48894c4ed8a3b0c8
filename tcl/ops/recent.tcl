# recent.tcl - File > Open recent (the last ten model files, kept beside
# the preferences file) and model files dropped on the main window.
# Sourced by veskops.tcl.

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

# Writes the list through a temporary copy, so that a full disk leaves
# the old list whole.
proc ::vesk::ops::recent_save {} {
    variable recent
    set text [join $recent \n]
    if {[llength $recent]} { append text \n }
    write_file_replacing [recent_file] $text "the list of recent files"
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
