#!/usr/bin/env bash
# Runs a command inside a private X session: its own Xvfb, a window manager, a private session bus, and
# throwaway home and XDG folders, so a test never sees or changes the user's desktop.
# Usage: with-x-session.sh COMMAND [ARGS...]; exits with the command's status.
# VANTRIL_TEST_WM chooses the window manager (default openbox): openbox, mutter, kwin, xfwm4,
# xfwm4-composite, marco, metacity, fluxbox, icewm or i3. The command sees it in VANTRIL_TEST_WM too.
set -u

if [ $# -eq 0 ]; then
    echo "usage: $0 COMMAND [ARGS...]" >&2
    exit 2
fi

wm=${VANTRIL_TEST_WM:-openbox}
case "$wm" in
openbox | mutter | kwin | xfwm4 | xfwm4-composite | marco | metacity | fluxbox | icewm | i3) ;;
*)
    echo "with-x-session: unknown window manager '$wm'" >&2
    exit 2
    ;;
esac
export VANTRIL_TEST_WM="$wm"

session=$(mktemp -d "${TMPDIR:-/tmp}/vantril-x.XXXXXX") || exit 1
xvfb_pid=
bus_pid=
wm_pid=
child_pid=

# shellcheck source=../session-common.sh
. "$(dirname "$0")/../session-common.sh"

cleanup() {
    local pid
    for pid in "$child_pid" "$wm_pid" "$bus_pid" "$xvfb_pid"; do
        [ -n "$pid" ] && stop "$pid"
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

# Polls `condition` every 0.1 s for up to `tenths` tries while the window manager lives.
wait_until() {
    local tenths=$1
    shift
    for _ in $(seq "$tenths"); do
        "$@" && return 0
        kill -0 "$wm_pid" 2>/dev/null || fail "$wm exited"
        sleep 0.1
    done
    "$@"
}

# -displayfd lets the server pick a free display itself, so parallel sessions never collide, and it
# writes the number only once it accepts connections. Without -noreset the server restarts whenever
# its last client leaves, and a client connecting just then (the window manager after the probe below)
# is refused.
mkfifo "$session/displayfd"
Xvfb -displayfd 3 -screen 0 1440x900x24 -nolisten tcp -noreset 3>"$session/displayfd" >"$session/x.log" 2>&1 &
xvfb_pid=$!
read -r -t 30 display <"$session/displayfd" || fail "Xvfb did not start"
[ -n "$display" ] || fail "Xvfb did not start"

export DISPLAY=":$display"
unset WAYLAND_DISPLAY XAUTHORITY SESSION_MANAGER DBUS_SESSION_BUS_ADDRESS DESKTOP_STARTUP_ID
unset XDG_CURRENT_DESKTOP XDG_SESSION_DESKTOP XDG_SESSION_TYPE DESKTOP_SESSION
use_private_folders "$session"
export QT_QPA_PLATFORM=xcb

xprop -root >/dev/null 2>&1 || fail "display $DISPLAY does not answer"

# The session bus comes before the window manager: mutter, KWin and xfwm4 (through xfconf) talk on it.
dbus-daemon --session --nofork --nopidfile --address="unix:path=$XDG_RUNTIME_DIR/bus" \
    >>"$session/x.log" 2>&1 &
bus_pid=$!
export DBUS_SESSION_BUS_ADDRESS="unix:path=$XDG_RUNTIME_DIR/bus"
for _ in $(seq 100); do
    [ -S "$XDG_RUNTIME_DIR/bus" ] && break
    sleep 0.1
done
[ -S "$XDG_RUNTIME_DIR/bus" ] || fail "the session bus did not start"

# A window manager that claims the screen names a check window on the root, which names itself.
wm_check() {
    local window
    window=$(xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | sed -n 's/.*window id # \(0x[0-9a-fA-F]*\).*/\1/p')
    [ -n "$window" ] && xprop -id "$window" _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -qi "$window"
}
i3_ready() {
    xprop -root I3_SOCKET_PATH 2>/dev/null | grep -q '"'
}

case "$wm" in
openbox) openbox --sm-disable >>"$session/x.log" 2>&1 & ;;
mutter) mutter --x11 --replace --sm-disable >>"$session/x.log" 2>&1 & ;;
kwin) kwin_x11 --replace >>"$session/x.log" 2>&1 & ;;
xfwm4) xfwm4 --compositor=off --sm-client-disable >>"$session/x.log" 2>&1 & ;;
xfwm4-composite) xfwm4 --compositor=on --sm-client-disable >>"$session/x.log" 2>&1 & ;;
marco) marco --no-composite --sm-disable >>"$session/x.log" 2>&1 & ;;
metacity) metacity --sm-disable >>"$session/x.log" 2>&1 & ;;
fluxbox) fluxbox >>"$session/x.log" 2>&1 & ;;
icewm) icewm >>"$session/x.log" 2>&1 & ;;
i3)
    # The stock configuration without what it starts (autostart entries, a screen locker, an applet)
    # and without its status bar, whose status program is not installed.
    mkdir -p "$XDG_CONFIG_HOME/i3"
    sed -e '/^exec/d' -e '/^bar {/,/^}/d' /etc/i3/config >"$XDG_CONFIG_HOME/i3/config"
    i3 -c "$XDG_CONFIG_HOME/i3/config" >>"$session/x.log" 2>&1 &
    ;;
esac
wm_pid=$!
# Windows mapped before the window manager manages the screen would not get focus from it. KWin takes
# several seconds.
wait_until 600 wm_check || fail "$wm did not take over the screen"
# i3 names its check window before it has read its configuration; its command socket comes after.
[ "$wm" = i3 ] && { wait_until 300 i3_ready || fail "i3 did not open its command socket"; }

# In the background, so that a signal reaches the traps at once instead of after the command ends.
"$@" &
child_pid=$!
wait "$child_pid"
status=$?
child_pid=
exit "$status"
