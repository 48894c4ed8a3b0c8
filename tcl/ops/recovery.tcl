# recovery.tcl - offering to recover the unsaved work a stopped program left
# (Recover / Open original / Discard) when the core finds it at start-up.
# Sourced by veskops.tcl.

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
