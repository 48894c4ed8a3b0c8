# console.tcl - the Tcl console window.
# Sourced by veskops.tcl.

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
