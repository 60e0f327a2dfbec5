#!/usr/bin/env bash
# Runs a command inside a private X session: its own Xvfb, a window manager, a private session bus, and
# throwaway home and XDG folders, so a test never sees or changes the user's desktop.
# Usage: with-x-session.sh COMMAND [ARGS...]; exits with the command's status.
# VANTRIL_TEST_WM chooses the window manager (default openbox): openbox, mutter, kwin, xfwm4,
# xfwm4-composite, marco, metacity, fluxbox, icewm or i3. The command sees it in VANTRIL_TEST_WM too.
set -u

wm=${VANTRIL_TEST_WM:-openbox}
case "$wm" in
openbox | mutter | kwin | xfwm4 | xfwm4-composite | marco | metacity | fluxbox | icewm | i3) ;;
*)
    echo "with-x-session: unknown window manager '$wm'" >&2
    exit 2
    ;;
esac
export VANTRIL_TEST_WM="$wm"

# shellcheck source=../session-common.sh
. "$(dirname "$0")/../session-common.sh"

wm_pid=
alive() {
    [ -z "$wm_pid" ] || kill -0 "$wm_pid" 2>/dev/null || fail "$wm exited"
}

# -displayfd lets the server pick a free display itself, so parallel sessions never collide, and it
# writes the number only once it accepts connections. Without -noreset the server restarts whenever
# its last client leaves, and a client connecting just then (the window manager after the probe below)
# is refused.
mkfifo "$session/displayfd"
Xvfb -displayfd 3 -screen 0 1440x900x24 -nolisten tcp -noreset 3>"$session/displayfd" >>"$log" 2>&1 &
started+=($!)
read -r -t 30 display <"$session/displayfd" && [ -n "$display" ] || fail "Xvfb did not start"
export DISPLAY=":$display"
xprop -root >/dev/null 2>&1 || fail "display $DISPLAY does not answer"
start_bus || fail "the session bus did not start"

case "$wm" in
openbox) openbox --sm-disable >>"$log" 2>&1 & ;;
mutter) mutter --x11 --replace --sm-disable >>"$log" 2>&1 & ;;
kwin) kwin_x11 --replace >>"$log" 2>&1 & ;;
xfwm4) xfwm4 --compositor=off --sm-client-disable >>"$log" 2>&1 & ;;
xfwm4-composite) xfwm4 --compositor=on --sm-client-disable >>"$log" 2>&1 & ;;
marco) marco --no-composite --sm-disable >>"$log" 2>&1 & ;;
metacity) metacity --sm-disable >>"$log" 2>&1 & ;;
fluxbox) fluxbox >>"$log" 2>&1 & ;;
icewm) icewm >>"$log" 2>&1 & ;;
i3)
    # The stock configuration without what it starts (autostart entries, a screen locker, an applet)
    # and without its status bar, whose status program is not installed.
    mkdir -p "$XDG_CONFIG_HOME/i3"
    sed -e '/^exec/d' -e '/^bar {/,/^}/d' /etc/i3/config >"$XDG_CONFIG_HOME/i3/config"
    i3 -c "$XDG_CONFIG_HOME/i3/config" >>"$log" 2>&1 &
    ;;
esac
wm_pid=$!
started+=($!)
# Windows mapped before the window manager manages the screen would not get focus from it. KWin takes
# several seconds.
wait_until 600 wm_check || fail "$wm did not take over the screen"
# i3 names its check window before it has read its configuration; its command socket comes after.
i3_ready() {
    xprop -root I3_SOCKET_PATH 2>/dev/null | grep -q '"'
}
[ "$wm" = i3 ] && { wait_until 300 i3_ready || fail "i3 did not open its command socket"; }

run_command "$@"
