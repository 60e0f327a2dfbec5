#!/usr/bin/env bash
# Runs a command inside a private X session: its own Xvfb, openbox as window manager, a private
# session bus, and throwaway home and XDG folders, so a test never sees or changes the user's desktop.
# Usage: with-x-session.sh COMMAND [ARGS...]; exits with the command's status.
set -u

if [ $# -eq 0 ]; then
    echo "usage: $0 COMMAND [ARGS...]" >&2
    exit 2
fi

session=$(mktemp -d "${TMPDIR:-/tmp}/vantril-x.XXXXXX") || exit 1
xvfb_pid=
wm_pid=
child_pid=

cleanup() {
    local pid
    for pid in "$child_pid" "$wm_pid" "$xvfb_pid"; do
        [ -n "$pid" ] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
    done
    rm -rf "$session"
}
trap cleanup EXIT
# Without these the EXIT trap would not run when CTest's timeout or Ctrl+C stops the script.
trap 'exit 130' INT
trap 'exit 143' TERM HUP

fail() {
    echo "with-x-session: $*" >&2
    [ -s "$session/x.log" ] && sed 's/^/  | /' "$session/x.log" >&2
    exit 1
}

# -displayfd lets the server pick a free display itself, so parallel sessions never collide, and it
# writes the number only once it accepts connections. Without -noreset the server restarts whenever
# its last client leaves, and a client connecting just then (openbox after the probe below) is refused.
mkfifo "$session/displayfd"
Xvfb -displayfd 3 -screen 0 1440x900x24 -nolisten tcp -noreset 3>"$session/displayfd" >"$session/x.log" 2>&1 &
xvfb_pid=$!
read -r -t 30 display <"$session/displayfd" || fail "Xvfb did not start"
[ -n "$display" ] || fail "Xvfb did not start"

export DISPLAY=":$display"
unset WAYLAND_DISPLAY XAUTHORITY SESSION_MANAGER DBUS_SESSION_BUS_ADDRESS DESKTOP_STARTUP_ID
export HOME="$session/home"
export XDG_CONFIG_HOME="$session/config"
export XDG_DATA_HOME="$session/data"
export XDG_CACHE_HOME="$session/cache"
export XDG_RUNTIME_DIR="$session/runtime"
export VANTRIL_CONFIG_DIR="$session/vantril"
export XDG_DATA_DIRS="${XDG_DATA_DIRS:-/usr/local/share:/usr/share}"
export QT_QPA_PLATFORM=xcb
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$VANTRIL_CONFIG_DIR"
mkdir -m 0700 "$XDG_RUNTIME_DIR"

xprop -root >/dev/null 2>&1 || fail "display $DISPLAY does not answer"

openbox --sm-disable >>"$session/x.log" 2>&1 &
wm_pid=$!
# Windows mapped before the window manager manages the screen would not get focus from it.
for _ in $(seq 200); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    kill -0 "$wm_pid" 2>/dev/null || fail "openbox exited"
    sleep 0.1
done
xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' || fail "openbox did not take over the screen"

# In the background, so that a signal reaches the traps at once instead of after the command ends.
dbus-run-session -- "$@" &
child_pid=$!
wait "$child_pid"
status=$?
child_pid=
exit "$status"
