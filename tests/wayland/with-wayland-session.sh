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
# VANTRIL_TEST_COMPOSITOR too, and in VANTRIL_TEST_WM, the tests' name for the window manager.
set -u

compositor=${VANTRIL_TEST_COMPOSITOR:-mutter}
case "$compositor" in
mutter | weston) ;;
*)
    echo "with-wayland-session: unknown compositor '$compositor'" >&2
    exit 2
    ;;
esac
export VANTRIL_TEST_COMPOSITOR="$compositor" VANTRIL_TEST_WM="$compositor"

skip() {
    echo "with-wayland-session: skipped: $*" >&2
    exit 77
}
command -v "$compositor" >/dev/null || skip "$compositor is not installed"
command -v Xwayland >/dev/null || skip "Xwayland is not installed (Debian package xwayland)"
command -v dbus-daemon >/dev/null || skip "dbus-daemon is not installed"

# shellcheck source=../session-common.sh
. "$(dirname "$0")/../session-common.sh"

# A compositor that ends before its displays come up cannot run here (no permission for the headless
# back end, a library missing): the check is skipped with its own last words as the reason.
compositor_pid=
alive() {
    [ -z "$compositor_pid" ] || kill -0 "$compositor_pid" 2>/dev/null && return 0
    [ -s "$log" ] && tail -n 10 "$log" | sed 's/^/  | /' >&2
    skip "$compositor ended before its session was up"
}

# The session bus comes first: mutter offers its services on it and looks for the session's others.
start_bus || skip "the session bus did not start"

socket=vantril-wayland
case "$compositor" in
mutter)
    # GNOME's compositor as its Wayland session runs it, with XWayland for X11 programs.
    mutter --headless --wayland --virtual-monitor 1440x900 --wayland-display="$socket" >>"$log" 2>&1 &
    # Both say which display XWayland took once it is listening: ":0" unless another server has it.
    display_line='Using public X11 display :\([0-9][0-9]*\).*'
    export XDG_CURRENT_DESKTOP=GNOME
    ;;
weston)
    weston --backend=headless-backend.so --xwayland --socket="$socket" --width=1440 --height=900 \
        --idle-time=0 >>"$log" 2>&1 &
    display_line='xserver listening on display :\([0-9][0-9]*\).*'
    ;;
esac
compositor_pid=$!
started+=($!)

x_display() {
    display=$(sed -n "s/.*$display_line/\1/p" "$log" | head -n 1)
    [ -n "$display" ]
}
wait_until 600 x_display || fail "$compositor named no XWayland display"
export WAYLAND_DISPLAY="$socket" XDG_SESSION_TYPE=wayland DISPLAY=":$display"
# mutter lets only clients with its cookie in; the file appears with XWayland.
auth() {
    XAUTHORITY=$(find "$XDG_RUNTIME_DIR" -maxdepth 1 -name '.mutter-Xwaylandauth.*' | head -n 1)
    [ -n "$XAUTHORITY" ]
}
if [ "$compositor" = mutter ]; then
    wait_until 300 auth || fail "mutter made no XWayland authority file"
    export XAUTHORITY
fi
# Weston starts XWayland only for its first X client, which this is.
wait_until 600 wm_check || fail "XWayland on $DISPLAY has no window manager"

run_command "$@"
