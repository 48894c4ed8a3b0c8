# make_mesh.tcl N FILE - writes a model of 2*N*N triangles: an N by N grid
# of quads split into triangles, smooth shaded, in objects of 100 rows.
lassign $argv n file
set fd [open $file w]
fconfigure $fd -buffering full -buffersize 1048576
puts $fd "VESKb"
puts $fd {MATERIAL "m" rgb 0.8 0.3 0.2 amb 0.2 0.2 0.2 emis 0 0 0 spec 0.5 0.5 0.5 shi 10 trans 0}
set rows_per 100
set objects [expr {($n + $rows_per - 1) / $rows_per}]
puts $fd "OBJECT world\nkids $objects"
for {set o 0} {$o < $objects} {incr o} {
    set r0 [expr {$o * $rows_per}]
    set r1 [expr {min($n, $r0 + $rows_per)}]
    set rows [expr {$r1 - $r0}]
    puts $fd "OBJECT poly\nname \"part$o\"\nnumvert [expr {($rows + 1) * ($n + 1)}]"
    for {set i $r0} {$i <= $r1} {incr i} {
        for {set j 0} {$j <= $n} {incr j} {
            puts $fd "[expr {$j * 4.0 / $n - 2}] [expr {(($i * 7 + $j * 3) % 11) / 40.0}] [expr {$i * 4.0 / $n - 2}]"
        }
    }
    puts $fd "numsurf [expr {2 * $rows * $n}]"
    for {set i 0} {$i < $rows} {incr i} {
        for {set j 0} {$j < $n} {incr j} {
            set a [expr {$i * ($n + 1) + $j}]
            set b [expr {$a + 1}]
            set c [expr {$a + $n + 1}]
            set d [expr {$c + 1}]
            puts $fd "SURF 0x10\nmat 0\nrefs 3\n$a 0 0\n$c 0 0\n$b 0 0"
            puts $fd "SURF 0x10\nmat 0\nrefs 3\n$b 0 0\n$c 0 0\n$d 0 0"
        }
    }
    puts $fd "kids 0"
}
close $fd
