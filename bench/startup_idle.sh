#!/usr/bin/env bash
# Start-up time to a mapped bar, idle CPU and memory of the running bar.
# Run inside a private X session: tests/x11/with-x-session.sh bench/startup_idle.sh
set -u
binary="$(cd "$(dirname "$0")/.." && pwd)/build/src/vantril"
[ -x "$binary" ] || { echo "build first: make build" >&2; exit 1; }

bar_window() {
    for window in $(xprop -root _NET_CLIENT_LIST | grep -o '0x[0-9a-f]*'); do
        xprop -id "$window" _NET_WM_NAME | grep -q '"Vantril"' && return 0
    done
    return 1
}

start=$(date +%s%N)
"$binary" 2>/dev/null &
pid=$!
trap 'kill $pid 2>/dev/null' EXIT
until bar_window; do
    kill -0 "$pid" 2>/dev/null || { echo "vantril exited" >&2; exit 1; }
    sleep 0.005
done
echo "bar mapped after $((($(date +%s%N) - start) / 1000000)) ms (polling adds a few ms)"

ticks() { awk '{print $14 + $15}' "/proc/$pid/stat"; }
sleep 5
before=$(ticks)
sleep 30
after=$(ticks)
echo "idle CPU: $(((after - before) * 1000 / $(getconf CLK_TCK))) ms over 30 s"
grep VmRSS "/proc/$pid/status"
