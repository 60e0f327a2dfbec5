# shellcheck shell=bash
# Sourced by the session scripts, with their command line: what every test session does alike. A
# session script defines alive, which ends the script when its display server or window manager went,
# starts its servers, adding each to `started`, and ends with run_command "$@".

if [ $# -eq 0 ]; then
    echo "usage: $0 COMMAND [ARGS...]" >&2
    exit 2
fi

name=$(basename "$0" .sh)
session=$(mktemp -d "${TMPDIR:-/tmp}/vantril-session.XXXXXX") || exit 1
log="$session/session.log"
started=()
child_pid=

# Whether a process still runs; an ended child of this shell stays a zombie until it is waited for.
running() {
    local state
    state=$(awk '{ print $3 }' "/proc/$1/stat" 2>/dev/null) && [ "$state" != Z ]
}

# A process that does not end within five seconds of being asked is killed: a window manager stuck on
# its way out must not hold the test until CTest's timeout.
stop() {
    kill "$1" 2>/dev/null || return 0
    for _ in $(seq 250); do
        running "$1" || break
        sleep 0.02
    done
    running "$1" && kill -9 "$1" 2>/dev/null
    wait "$1" 2>/dev/null
}

# The command first, then the servers in the reverse order of their start.
cleanup() {
    [ -n "$child_pid" ] && stop "$child_pid"
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        stop "${started[i]}"
    done
    rm -rf "$session"
}
trap cleanup EXIT
# Without these the EXIT trap would not run when CTest's timeout or Ctrl+C stops the script.
trap 'exit 130' INT
trap 'exit 143' TERM HUP

fail() {
    echo "$name: $*" >&2
    [ -s "$log" ] && tail -n 30 "$log" | sed 's/^/  | /' >&2
    exit 1
}

# Polls `condition` every 0.1 s for up to `tenths` tries while the session is alive.
wait_until() {
    local tenths=$1
    shift
    for _ in $(seq "$tenths"); do
        "$@" && return 0
        alive
        sleep 0.1
    done
    "$@"
}

# Throwaway home, XDG and configuration folders below the session folder, so that a test never sees or
# changes the user's desktop.
export HOME="$session/home"
export XDG_CONFIG_HOME="$session/config"
export XDG_DATA_HOME="$session/data"
export XDG_CACHE_HOME="$session/cache"
export XDG_RUNTIME_DIR="$session/runtime"
# Autostart entries of the machine (/etc/xdg/autostart) must not start inside the session.
export XDG_CONFIG_DIRS="$session/xdg-system"
export VANTRIL_CONFIG_DIR="$session/vantril"
export XDG_DATA_DIRS="${XDG_DATA_DIRS:-/usr/local/share:/usr/share}"
# Desktop settings read through GSettings stay in memory, never in the machine's dconf database.
export GSETTINGS_BACKEND=memory
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_CONFIG_DIRS" "$VANTRIL_CONFIG_DIR"
mkdir -m 0700 "$XDG_RUNTIME_DIR"
unset DISPLAY XAUTHORITY WAYLAND_DISPLAY WAYLAND_SOCKET SESSION_MANAGER DBUS_SESSION_BUS_ADDRESS
unset DESKTOP_STARTUP_ID XDG_CURRENT_DESKTOP XDG_SESSION_DESKTOP XDG_SESSION_TYPE DESKTOP_SESSION
# The test programs look at the windows through xcb, XWayland's under Wayland; Vantril chooses by itself.
export QT_QPA_PLATFORM=xcb

# A private session bus; mutter, KWin and xfwm4 (through xfconf) talk on it.
start_bus() {
    dbus-daemon --session --nofork --nopidfile --address="unix:path=$XDG_RUNTIME_DIR/bus" >>"$log" 2>&1 &
    started+=($!)
    export DBUS_SESSION_BUS_ADDRESS="unix:path=$XDG_RUNTIME_DIR/bus"
    for _ in $(seq 100); do
        [ -S "$XDG_RUNTIME_DIR/bus" ] && return 0
        sleep 0.1
    done
    return 1
}

# A window manager that claims the screen names a check window on the root, which names itself.
wm_check() {
    local window
    window=$(xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | sed -n 's/.*window id # \(0x[0-9a-fA-F]*\).*/\1/p')
    [ -n "$window" ] && xprop -id "$window" _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -qi "$window"
}

# In the background, so that a signal reaches the traps at once instead of after the command ends.
run_command() {
    "$@" &
    child_pid=$!
    wait "$child_pid"
    local status=$?
    child_pid=
    exit "$status"
}
