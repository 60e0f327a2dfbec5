#!/usr/bin/env bash
# Runs a command inside a private headless Wayland session: a compositor with XWayland, a private
# session bus, and throwaway home and XDG folders (XDG_RUNTIME_DIR too), so a test never sees or changes
# the user's desktop. The command sees WAYLAND_DISPLAY, XWayland's DISPLAY (and XAUTHORITY where the
# compositor makes one), and what a login manager sets for such a session: XDG_SESSION_TYPE=wayland and
# XDG_CURRENT_DESKTOP.
# Usage: with-wayland-session.sh COMMAND [ARGS...]; exits with the command's status, or with 77 after a
# line saying why when the compositor cannot run on this machine (not installed, not permitted), so that
# CTest reports the check as skipped, never as passed.
# VANTRIL_TEST_COMPOSITOR chooses the compositor (default mutter): mutter (GNOME's, headless, with a
# virtual 1440x900 monitor) or weston (its headless back end). The command sees it in
# VANTRIL_TEST_COMPOSITOR too.
set -u

if [ $# -eq 0 ]; then
    echo "usage: $0 COMMAND [ARGS...]" >&2
    exit 2
fi

compositor=${VANTRIL_TEST_COMPOSITOR:-mutter}
case "$compositor" in
mutter | weston) ;;
*)
    echo "with-wayland-session: unknown compositor '$compositor'" >&2
    exit 2
    ;;
esac
export VANTRIL_TEST_COMPOSITOR="$compositor"
# The tests' name for the window manager, which is the compositor itself.
export VANTRIL_TEST_WM="$compositor"

skip() {
    echo "with-wayland-session: skipped: $*" >&2
    exit 77
}
command -v "$compositor" >/dev/null || skip "$compositor is not installed"
command -v Xwayland >/dev/null || skip "Xwayland is not installed (Debian package xwayland)"
command -v dbus-daemon >/dev/null || skip "dbus-daemon is not installed"

session=$(mktemp -d "${TMPDIR:-/tmp}/vantril-wl.XXXXXX") || exit 1
bus_pid=
compositor_pid=
child_pid=

# shellcheck source=../session-common.sh
. "$(dirname "$0")/../session-common.sh"

cleanup() {
    local pid
    for pid in "$child_pid" "$compositor_pid" "$bus_pid"; do
        [ -n "$pid" ] && stop "$pid"
    done
    rm -rf "$session"
}
trap cleanup EXIT
# Without these the EXIT trap would not run when CTest's timeout or Ctrl+C stops the script.
trap 'exit 130' INT
trap 'exit 143' TERM HUP

log="$session/compositor.log"
fail() {
    echo "with-wayland-session: $*" >&2
    [ -s "$log" ] && tail -n 30 "$log" | sed 's/^/  | /' >&2
    exit 1
}
# A compositor that ends before its displays come up cannot run here (no permission for the headless
# back end, a library missing): the check is skipped with its own last words as the reason.
gone() {
    kill -0 "$compositor_pid" 2>/dev/null && return 1
    [ -s "$log" ] && tail -n 10 "$log" | sed 's/^/  | /' >&2
    skip "$compositor ended before its session was up"
}

# Polls `condition` every 0.1 s for up to `tenths` tries while the compositor lives.
wait_until() {
    local tenths=$1
    shift
    for _ in $(seq "$tenths"); do
        "$@" && return 0
        gone
        sleep 0.1
    done
    "$@"
}

unset DISPLAY XAUTHORITY WAYLAND_DISPLAY WAYLAND_SOCKET SESSION_MANAGER DBUS_SESSION_BUS_ADDRESS
unset DESKTOP_STARTUP_ID XDG_CURRENT_DESKTOP XDG_SESSION_DESKTOP XDG_SESSION_TYPE DESKTOP_SESSION
use_private_folders "$session"
# The test programs look at XWayland's windows from the outside; Vantril chooses xcb by itself.
export QT_QPA_PLATFORM=xcb

# The session bus comes first: mutter offers its services on it and looks for the session's others.
dbus-daemon --session --nofork --nopidfile --address="unix:path=$XDG_RUNTIME_DIR/bus" >"$session/bus.log" 2>&1 &
bus_pid=$!
export DBUS_SESSION_BUS_ADDRESS="unix:path=$XDG_RUNTIME_DIR/bus"
for _ in $(seq 100); do
    [ -S "$XDG_RUNTIME_DIR/bus" ] && break
    sleep 0.1
done
[ -S "$XDG_RUNTIME_DIR/bus" ] || skip "the session bus did not start"

socket=vantril-wayland
case "$compositor" in
mutter)
    # GNOME's compositor as its Wayland session runs it, with XWayland for X11 programs.
    mutter --headless --wayland --virtual-monitor 1440x900 --wayland-display="$socket" >"$log" 2>&1 &
    # Both say which display XWayland took once it is listening: ":0" unless another server has it.
    display_line='Using public X11 display :\([0-9][0-9]*\).*'
    export XDG_CURRENT_DESKTOP=GNOME
    ;;
weston)
    weston --backend=headless-backend.so --xwayland --socket="$socket" --width=1440 --height=900 \
        --idle-time=0 >"$log" 2>&1 &
    display_line='xserver listening on display :\([0-9][0-9]*\).*'
    ;;
esac
compositor_pid=$!

x_display() {
    display=$(sed -n "s/.*$display_line/\1/p" "$log" | head -n 1)
    [ -n "$display" ]
}
wait_until 600 x_display || fail "$compositor named no XWayland display"
export WAYLAND_DISPLAY="$socket"
export XDG_SESSION_TYPE=wayland
export DISPLAY=":$display"
# mutter lets only clients with its cookie in; the file appears with XWayland.
if [ "$compositor" = mutter ]; then
    auth() {
        XAUTHORITY=$(find "$XDG_RUNTIME_DIR" -maxdepth 1 -name '.mutter-Xwaylandauth.*' | head -n 1)
        [ -n "$XAUTHORITY" ]
    }
    wait_until 300 auth || fail "mutter made no XWayland authority file"
    export XAUTHORITY
fi

# The X11 window manager inside the compositor names a check window on the root, which names itself.
# Weston starts XWayland only for its first X client, which this is.
wm_check() {
    local window
    window=$(xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | sed -n 's/.*window id # \(0x[0-9a-fA-F]*\).*/\1/p')
    [ -n "$window" ] && xprop -id "$window" _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -qi "$window"
}
wait_until 600 wm_check || fail "XWayland on $DISPLAY has no window manager"

# In the background, so that a signal reaches the traps at once instead of after the command ends.
"$@" &
child_pid=$!
wait "$child_pid"
status=$?
child_pid=
exit "$status"
