# Sourced by the session scripts: what every test session does alike.

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

# Throwaway home, XDG and configuration folders below SESSION, so that a test never sees or changes the
# user's desktop.
use_private_folders() {
    local session=$1
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
}
