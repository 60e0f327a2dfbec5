# Sourced by the session scripts: stopping the processes a test session started.

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
