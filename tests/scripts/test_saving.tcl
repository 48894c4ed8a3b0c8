# Saving and loading that can't lose work: a save under a file-size limit
# that is too small (the shell survives, says so, the old file stays byte
# for byte, no temporary is left), through a symbolic link, with the
# longest file name; loading a device, a pipe or a directory returns at
# once; a load into a model that holds something is one undo step; the
# result of save_settings.
source [file join [lindex $argv 0] scripts harness.tcl]

set data [file join $::tests_dir data vk]
set vesksh [info nameofexecutable]

# Every entry of a directory, hidden ones included.
proc entries {dir} {
    return [lsort [lmap name [glob -nocomplain -tails -directory $dir * .*] {
        if {$name in {. ..}} continue
        set name
    }]]
}

# --- a file-size limit too small for the model ---
tcltest::test saving-1.1 {a save under a file-size limit too small keeps the old file} -body {
    set limited [file join $::scratch limited]
    file mkdir $limited
    set target [file join $limited model.vk]
    write_bytes $target "the previous file\n"
    set child [file join $::scratch limit_child.tcl]
    set fd [open $child w]
    puts $fd {
        vesk load_vk [lindex $argv 0]
        for {set i 0} {$i < 40} {incr i} { vesk new_cube; vesk move 2 0 0 }
        set r [vesk save_vk [lindex $argv 1]]
        puts "RESULT $r ALIVE"
    }
    close $fd
    set status [catch {exec sh -c {ulimit -f 2; exec "$0" "$@"} $vesksh $child [file join $data model.vk] $target 2>@1} out]
    check "under the limit: the shell survives" $status 0
    check_match "under the limit: the save failed" $out "*RESULT 0 ALIVE*"
    check_match "under the limit: it says why" $out "*File too large*"
    check "under the limit: old file byte for byte" [read_bytes $target] "the previous file\n"
    check "under the limit: no temporary left" [entries $limited] model.vk
    mismatches
} -result {}

# --- a full disk and a read-only one: a small file system of our own,
# where the test may mount one (as root with the right; skipped otherwise) ---
set small [file join $::scratch small_fs]
file mkdir $small
tcltest::testConstraint small_fs [expr {![catch {exec mount -t tmpfs -o size=32k tmpfs $small}]}]
# Unmounted whatever happens, so that no later run finds it mounted.
tcltest::test saving-1.2 {a full disk and a read-only one keep the old file} -constraints small_fs -body {
    set target [file join $small model.vk]
    write_bytes $target "the previous file\n"
    quietly { vesk new_model; for {set i 0} {$i < 300} {incr i} { vesk new_cube; vesk move 1 0 0 } }
    set out [quietly { set r [vesk save_vk $target] }]
    check "full disk: not saved" $r 0
    check_match "full disk: says why" $out "*No space left on device*"
    check "full disk: old file byte for byte" [read_bytes $target] "the previous file\n"
    check "full disk: no temporary left" [entries $small] model.vk
    check "full disk: still unsaved" $unsaved_changes 1
    catch {exec mount -o remount,ro $small}
    quietly { vesk new_model; vesk new_cube }
    set out [quietly { set r [vesk save_vk $target] }]
    check "read-only: not saved" $r 0
    check_match "read-only: says why" $out "*Read-only file system*"
    check "read-only: old file byte for byte" [read_bytes $target] "the previous file\n"
    mismatches
} -cleanup {
    catch {exec umount $small}
} -result {}

# --- through a symbolic link ---
tcltest::test saving-2.1 {a save through a symbolic link writes the file it names} -body {
    quietly { vesk load_vk [file join $data model.vk] }
    set real_dir [file join $::scratch real]
    file mkdir $real_dir
    set real [file join $real_dir model.vk]
    write_bytes $real "old\n"
    set link [file join $::scratch link.vk]
    file link -symbolic $link $real
    quietly { set r [vesk save_vk $link] }
    check "through a link: saved" $r 1
    check "through a link: the link stays" [file type $link] link
    check_match "through a link: the file it names has the model" [read_bytes $real] "VESKb*"
    check "through a link: the backup sits beside that file" [read_bytes $real~] "old\n"
    mismatches
} -result {}

# --- the longest file name ---
tcltest::test saving-2.2 {the longest file name saves, without a backup} -body {
    set long [file join $::scratch [string repeat m 252].vk]
    quietly { set r [vesk save_vk $long] }
    check "255-byte name: saved" $r 1
    set out [quietly { set r [vesk save_vk $long] }]
    check "255-byte name: saved again" $r 1
    check_match "255-byte name: its backup name is too long, and the user is told" $out "*no backup could be kept*"
    mismatches
} -result {}

# --- what is not a file loads nothing, at once ---
tcltest::test saving-3.1 {what is not a file loads nothing, at once} -body {
    set before [vesk get_info]
    foreach {what path} [list "/dev/zero" /dev/zero "a directory" $::scratch] {
        set started [clock milliseconds]
        set out [quietly { set r [vesk load_vk $path] }]
        check "$what: refused" $r 0
        check_true "$what: at once" [expr {[clock milliseconds] - $started < 5000}]
        check_match "$what: says it is not a file" $out "*not a file - only files can be loaded*"
    }
    set fifo [file join $::scratch pipe.vk]
    exec mkfifo $fifo
    set out [quietly { set r [vesk load_vk $fifo] }]
    check "a pipe: refused without waiting for a writer" $r 0
    check "nothing loaded from any of them" [vesk get_info] $before
    mismatches
} -result {}

# --- a load into a model that holds something is one undo step ---
tcltest::test saving-4.1 {a load into a model that holds something is one undo step} -body {
    quietly { vesk clear_all; vesk load_vk [file join $data model.vk] }
    check "a load into an empty model leaves no history" $undo_count 0
    set alone [vesk object_get_children [vesk get_world]]
    quietly { vesk select_object [lindex $alone 0] }
    set selected [vesk get_selected_objects]
    quietly { set r [vesk load_vk [file join $data model.vk]] }
    check "second load" $r 1
    check "second load: objects added" [llength [vesk object_get_children [vesk get_world]]] [expr {2 * [llength $alone]}]
    check "second load: one undo step" $undo_count 1
    quietly { vesk undo }
    check "undo takes the loaded objects out" [vesk object_get_children [vesk get_world]] $alone
    check "undo gives back the selection of before" [vesk get_selected_objects] $selected
    mismatches
} -result {}

# A load cut short is undone the same way.
tcltest::test saving-4.2 {a load cut short is undone the same way} -body {
    set cut [file join $::scratch cut.vk]
    set text [read_bytes [file join $data model.vk]]
    set fd [open $cut wb]
    puts -nonewline $fd [string range $text 0 [expr {[string length $text] * 3 / 4}]]
    close $fd
    set out [quietly { vesk load_vk $cut }]
    check_match "cut load: the status line says so with a count" $out "*was not read completely: the file is cut short or damaged (*problem*"
    quietly { vesk undo }
    check "cut load undone" [vesk object_get_children [vesk get_world]] $alone
    mismatches
} -result {}

# --- names and urls a model file can't keep are reported, never silently cut ---
tcltest::test saving-5.1 {names and urls a model file can't keep are reported} -body {
    quietly { vesk new_model; vesk new_cube; vesk select_all }
    quietly { vesk set_current_object_name [string repeat n 300]; vesk set_current_object_url "first\nsecond" }
    set out [quietly { set r [vesk save_vk [file join $::scratch texts.vk]] }]
    check "long texts: still saved" $r 1
    check_match "long texts: a message names the object" $out "*the name of object \"nnnnnnnnnn*...\" is longer than a line*"
    check_match "long texts: and the line breaks" $out "*the url of object*holds line breaks*"
    check_match "long texts: the status line says so" $out "*2 names or urls will not read back as they are*"
    mismatches
} -result {}

# --- a model 100,000 levels deep is edited, saved and read back whole ---
tcltest::test saving-6.1 {a model 100,000 levels deep is edited, saved and read back whole} -body {
    set deep [file join $::scratch deep.vk]
    set fd [open $deep w]
    puts $fd "VESKb\nOBJECT world\nkids 1"
    for {set i 0} {$i < 100000} {incr i} { puts $fd "OBJECT group\nnumvert 1\n$i 1 2\nkids 1" }
    puts $fd "OBJECT poly\nname \"bottom\"\nkids 0"
    close $fd
    proc depth {} {
        set n 0
        set id [vesk get_world]
        while {[set kids [vesk object_get_children $id]] ne ""} {
            set id [lindex $kids 0]
            incr n
        }
        return [list $n [vesk object_get_name $id]]
    }
    quietly { vesk new_model; set r [vesk open_vk $deep] }
    check "deep: opened" $r 1
    check "deep: every level" [depth] {100001 bottom}
    quietly { vesk select_all; vesk move 1 0 0; vesk undo; vesk move 0 0 1 }
    set deep_saved [file join $::scratch deep_saved.vk]
    quietly { set r [vesk save_vk $deep_saved] }
    check "deep: saved" $r 1
    quietly { vesk new_model; set r [vesk open_vk $deep_saved] }
    check "deep: read back" [list $r [depth]] {1 {100001 bottom}}
    check "deep: whole" [lindex [vesk_check_tree] 0] 0
    quietly { vesk new_model }
    mismatches
} -result {}

# --- save_settings answers whether it saved ---
tcltest::test saving-7.1 {save_settings answers whether it saved} -body {
    set out [quietly { set r [vesk save_settings] }]
    check "save_settings result" $r 1
    set saved_home $env(HOME)
    set env(HOME) [file join $::scratch no such dir]
    set out [quietly { set r [vesk save_settings] }]
    set env(HOME) $saved_home
    check "save_settings into a missing directory" $r 0
    check_match "save_settings says why" $out "*No such file or directory*"
    mismatches
} -result {}

finish
