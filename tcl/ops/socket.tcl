# socket.tcl - the scripting socket: a local port that takes Tcl commands
# from a client that first sends the token, run in a safe interpreter
# unless the user chose full access.
# Sourced by veskops.tcl.

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
