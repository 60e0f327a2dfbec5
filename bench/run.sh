#!/usr/bin/env bash
# Measures the bar beside two yardsticks, a minimal Qt window and a minimal Xlib window, and prints one
# table: each figure is the median of several runs, with the smallest and largest. `make bench` runs it
# inside a private X session: tests/x11/with-x-session.sh bench/run.sh BUILD_FOLDER. bench/README.md says
# what each figure is and how it is taken.
#
# Settings, from the environment (defaults in brackets):
#   BENCH_RUNS          start-ups of each program [11]
#   BENCH_IDLE_S        length of one idle window, in seconds [60]
#   BENCH_IDLE_WINDOWS  idle windows [3]
#   BENCH_SAMPLES       timed reloads, flyouts and clicks of each kind [15]
#   BENCH_CYCLES        flyouts opened and closed, and hand edits, before memory is read again [1000]
#   VANTRIL             another build of the program to measure instead of BUILD_FOLDER's
set -u

build=$(cd "${1:?usage: run.sh BUILD_FOLDER}" && pwd)
vantril=${VANTRIL:-$build/src/vantril}
xwatch=$build/bench/bench_xwatch
core=$build/bench/bench_core
runs=${BENCH_RUNS:-11}
idle_s=${BENCH_IDLE_S:-60}
idle_windows=${BENCH_IDLE_WINDOWS:-3}
samples=${BENCH_SAMPLES:-15}
cycles=${BENCH_CYCLES:-1000}

work=$(mktemp -d "${TMPDIR:-/tmp}/vantril-bench.XXXXXX") || exit 1
results=$work/results
started=()

cleanup() {
    local pid
    for pid in "${started[@]}"; do
        kill "$pid" 2>/dev/null
    done
    wait
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

say() { echo "bench: $*" >&2; }
record() { echo "$1 $2" >>"$results"; }

# --- Programs under the window watcher ---------------------------------------------------------------

# Starts a command under the watcher and waits until its window is mapped and painted; sets $pid, and
# $painted to the milliseconds from the start.
launch() {
    local out=$work/launch.out
    rm -f "$out"
    "$xwatch" start "$@" >"$out" 2>>"$work/log" &
    local watcher=$!
    until [ -s "$out" ]; do
        if ! kill -0 "$watcher" 2>/dev/null; then
            say "$* showed no window"
            cat "$work/log" >&2
            exit 1
        fi
        sleep 0.01
    done
    local mapped
    read -r pid mapped painted <"$out"
    started+=("$pid")
}

# A configuration folder for one bar, with FILE as its buttons.json and, given "autohide", auto-hide on.
folder() {
    local dir=$work/$1
    rm -rf "$dir"
    mkdir -p "$dir/xdg/vantril"
    cp "$2" "$dir/buttons.json"
    if [ "${3:-}" = autohide ]; then
        printf '[General]\nautoHide=true\n' >"$dir/xdg/vantril/vantril.ini"
    fi
    echo "$dir"
}

# The bar on FOLDER, with any further VARIABLE=VALUE in its environment.
bar() {
    local dir=$1
    shift
    launch VANTRIL_CONFIG_DIR="$dir" XDG_CONFIG_HOME="$dir/xdg" "$@" "$vantril"
}

stop() {
    kill "$1" 2>/dev/null
    while kill -0 "$1" 2>/dev/null; do sleep 0.01; done
}

pss_mb() { awk '/^Pss:/ { printf "%.2f", $2 / 1024 }' "/proc/$1/smaps_rollup"; }
# Nanoseconds on the CPU and voluntary context switches so far, one "thread value" line per thread: a
# thread that ends between two readings takes its counts with it, so readings are compared thread by thread.
cpu_ns() {
    for task in /proc/"$1"/task/*; do echo "${task##*/} $(cut -d' ' -f1 "$task/schedstat" 2>/dev/null)"; done
}
wakeups() {
    for task in /proc/"$1"/task/*; do
        echo "${task##*/} $(awk '/^voluntary_ctxt_switches/ { print $2 }' "$task/status" 2>/dev/null)"
    done
}
# What the threads alive at the second reading did since the first (a new thread: all of its counts).
grown() { awk 'NR == FNR { before[$1] = $2; next } $2 != "" { s += $2 - before[$1] } END { print s + 0 }' "$1" "$2"; }

# A bar of one chip.
chip() {
    printf '{ "buttons" : [ { "action" : "%s", "argument" : "%s", "symbol" : "doc", "title" : "%s" } ] }\n' \
        "$1" "$2" "$3"
}

# --- The figures ---------------------------------------------------------------------------------------

load_before=$(cut -d' ' -f1-3 /proc/loadavg)
"$core" defaults "$work/default.json" && "$core" bar 1000 "$work/bar1000.json" || exit 1

say "start-up and memory: $runs runs of each program, after one that warms the caches"
for round in $(seq 0 "$runs"); do
    for subject in default bar1000 qt xlib; do
        case $subject in
        default | bar1000) bar "$(folder start "$work/$subject.json")" ;;
        qt) launch "$build/bench/bench_qtwindow" ;;
        xlib) launch "$build/bench/bench_xlibwindow" ;;
        esac
        sleep 3
        if [ "$round" -gt 0 ]; then
            record "startup.$subject" "$painted"
            record "pss.$subject" "$(pss_mb "$pid")"
        fi
        stop "$pid"
    done
done

say "idle: $idle_windows windows of $idle_s s, five programs side by side"
"$xwatch" point 0
bar "$(folder off "$work/default.json")"
idle_off=$pid
bar "$(folder hidden "$work/default.json" autohide)"
idle_hidden=$pid
bar "$(folder shown "$work/default.json" autohide)" VANTRIL_TOP=1
idle_shown=$pid
"$xwatch" point "$idle_shown"
launch "$build/bench/bench_qtwindow"
idle_qt=$pid
launch "$build/bench/bench_xlibwindow"
idle_xlib=$pid
sleep 5 # the hidden bar fades out after 1.5 s
for window in $(seq "$idle_windows"); do
    for subject in off hidden shown qt xlib; do
        p=idle_$subject
        cpu_ns "${!p}" >"$work/cpu.$subject"
        wakeups "${!p}" >"$work/wake.$subject"
    done
    sleep "$idle_s"
    for subject in off hidden shown qt xlib; do
        p=idle_$subject
        cpu_ns "${!p}" >"$work/cpu.$subject.after"
        wakeups "${!p}" >"$work/wake.$subject.after"
        record "idlecpu.$subject" "$(grown "$work/cpu.$subject" "$work/cpu.$subject.after" |
            awk -v s="$idle_s" '{ printf "%.3f", $1 / 1e6 * 30 / s }')"
        record "idlewake.$subject" "$(grown "$work/wake.$subject" "$work/wake.$subject.after" |
            awk -v s="$idle_s" '{ printf "%.3f", $1 / s }')"
    done
done
hidden_opacity=$(xprop -id "$("$xwatch" window "$idle_hidden")" _NET_WM_WINDOW_OPACITY 2>/dev/null)
for p in $idle_off $idle_hidden $idle_shown $idle_qt $idle_xlib; do stop "$p"; done

say "reload: $samples hand edits at 10, 100 and 1,000 buttons"
for count in 10 100 1000; do
    "$core" bar "$count" "$work/first.json" First && "$core" bar "$count" "$work/second.json" Second || exit 1
    dir=$(folder reload "$work/first.json")
    bar "$dir"
    "$xwatch" reload "$pid" "$dir/buttons.json" "$work/second.json" "$work/first.json" "$samples" |
        while read -r ms; do record "reload.$count" "$ms"; done
    stop "$pid"
done

say "memory: $cycles flyouts opened and closed, then $cycles hand edits"
stack() {
    printf '{ "buttons" : [ { "action" : "group", "children" : [ %s ], "symbol" : "folder", "title" : "%s" } ] }\n' \
        '{ "action" : "open", "argument" : "~", "symbol" : "folder", "title" : "Home" },
         { "action" : "url", "argument" : "example.org", "symbol" : "globe", "title" : "Example" }' "$1"
}
stack Stack >"$work/stack.json"
stack Stacks >"$work/stacks.json"
dir=$(folder memory "$work/stack.json")
bar "$dir"
# One of each first: what is loaded on first use (the icon themes for a symbol not drawn before, the
# flyout's window) is not growth.
"$xwatch" flyout "$pid" 1 >/dev/null || exit 1
"$xwatch" reload "$pid" "$dir/buttons.json" "$work/stacks.json" "$work/stack.json" 2 >/dev/null || exit 1
sleep 3
record mem.before "$(pss_mb "$pid")"
"$xwatch" flyout "$pid" "$cycles" >/dev/null || exit 1
"$xwatch" reload "$pid" "$dir/buttons.json" "$work/stacks.json" "$work/stack.json" "$cycles" >/dev/null || exit 1
record mem.after "$(pss_mb "$pid")"
stop "$pid"

say "folder browsing: $samples taps on folders of 1,000 and 100,000 entries"
for count in 1000 100000; do
    mkdir -p "$work/folder$count"
    (cd "$work/folder$count" && seq -f 'Report %g.txt' "$count" | xargs touch) || exit 1
    chip folder "$work/folder$count" Folder >"$work/folder.json"
    bar "$(folder browse "$work/folder.json")"
    "$xwatch" flyout "$pid" "$samples" | while read -r ms; do record "folder.$count" "$ms"; done
    stop "$pid"
    rm -rf "$work/folder$count"
done

say "actions: $samples clicks on a shell chip and on a keys chip"
chip shell "$work/stamp" Run >"$work/shell.json"
bar "$(folder shell "$work/shell.json")" SHELL="$build/bench/bench_stamp"
"$xwatch" shell "$pid" "$work/stamp" "$samples" | while read -r ms; do record click.shell "$ms"; done
stop "$pid"
chip keys k Keys >"$work/keys.json"
bar "$(folder keys "$work/keys.json")"
"$xwatch" keys "$pid" "$samples" | while read -r ms; do record click.keys "$ms"; done
stop "$pid"

say "hit testing and the document: $runs runs"
"$core" "$runs" | while read -r label value; do record "core.$label" "$value"; done

# --- The table -----------------------------------------------------------------------------------------

# "median min max" of a figure's runs.
summary() {
    awk -v key="$1" '$1 == key { print $2 }' "$results" | sort -g |
        awk '{ v[NR] = $1 } END { if (NR) printf "%s %s %s\n", NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2, v[1], v[NR] }'
}
median() { summary "$1" | cut -d' ' -f1; }

# One row: LABEL UNIT KEY, the keys of the yardsticks' figures (or -), and the target: "< N" for an
# absolute bound, "x R" for at most R times the Qt window's figure, "+ N" for at most N above KEY2.
row() {
    local label=$1 unit=$2 key=$3 qt=$4 xlib=$5 target=${6:-} bound=${7:-} other=${8:-}
    local med min max
    read -r med min max <<<"$(summary "$key")"
    [ -n "${med:-}" ] || { med=-; min=-; max=-; }
    local qtm=- xlibm=- verdict=
    [ "$qt" != - ] && qtm=$(median "$qt")
    [ "$xlib" != - ] && xlibm=$(median "$xlib")
    if [ -n "$target" ] && [ "$med" != - ]; then
        verdict=$(awk -v m="$med" -v b="$bound" -v q="${qtm:--}" -v o="$( [ -n "$other" ] && median "$other")" -v t="$target" 'BEGIN {
            if (t == "<") { ok = m < b; text = sprintf("< %g", b) }
            else if (t == "x") { ok = m <= b * q; text = sprintf("<= %.2fx Qt: %.2fx", b, m / q) }
            else { ok = m <= o + b; text = sprintf("<= +%g: %+.2f", b, m - o) }
            printf "%s %s", text, ok ? "met" : "NOT MET" }')
    fi
    printf '%-44s %-9s %9s %9s %9s %10s %10s  %s\n' "$label" "$unit" "$med" "$min" "$max" "$qtm" "$xlibm" "$verdict"
}

echo
echo "Vantril benchmarks, $(date '+%Y-%m-%d %H:%M'), $(nproc) cores, load average before $load_before," \
    "after $(cut -d' ' -f1-3 /proc/loadavg)"
echo "$runs start-ups of each program, $idle_windows idle windows of $idle_s s, $samples timed samples," \
    "$cycles cycles"
[[ $hidden_opacity == *"= 0" ]] || echo "warning: the auto-hidden bar was not hidden during the idle windows"
echo
printf '%-44s %-9s %9s %9s %9s %10s %10s  %s\n' figure unit median min max "Qt window" "Xlib" target
row "1. start-up to painted, default file" ms startup.default startup.qt startup.xlib x 1.10
row "1. start-up to painted, 1,000 buttons" ms startup.bar1000 startup.qt startup.xlib x 1.50
row "2. PSS 3 s after start-up" MB pss.default pss.qt pss.xlib x 1.15
row "2. PSS, a one-stack bar, before the cycles" MB mem.before - -
row "2. PSS after $cycles flyouts and hand edits" MB mem.after - - + 1 mem.before
row "3. idle CPU, auto-hide off" "ms/30 s" idlecpu.off idlecpu.qt idlecpu.xlib "<" 0.1
row "3. idle wake-ups, auto-hide off" "/s" idlewake.off idlewake.qt idlewake.xlib "<" 0.02
row "3. idle CPU, auto-hide on, shown" "ms/30 s" idlecpu.shown - - "<" 20
row "3. idle wake-ups, auto-hide on, shown" "/s" idlewake.shown - -
row "3. idle CPU, auto-hide on, hidden" "ms/30 s" idlecpu.hidden - - "<" 20
row "3. idle wake-ups, auto-hide on, hidden" "/s" idlewake.hidden - -
row "4. reload, 10 buttons" ms reload.10 - -
row "4. reload, 100 buttons" ms reload.100 - -
row "4. reload, 1,000 buttons" ms reload.1000 - - "<" 350
row "5. drop-target search, 20 chips" "µs/call" core.hit20 - -
row "5. drop-target search, 200 chips" "µs/call" core.hit200 - - "<" 5
row "5. drop-target search, 1,000 chips" "µs/call" core.hit1000 - -
for count in 10 1000 10000; do
    row "6. decode, $count buttons" ms "core.decode$count" - -
    row "6. encode, $count buttons" ms "core.encode$count" - -
    if [ "$count" = 10000 ]; then
        row "6. encode and save, $count buttons" ms "core.save$count" - - "<" 50
    else
        row "6. encode and save, $count buttons" ms "core.save$count" - -
    fi
done
row "7. tap to folder shown, 1,000 entries" ms folder.1000 - -
row "7. tap to folder shown, 100,000 entries" ms folder.100000 - - "<" 300
row "8. click to process started, shell chip" ms click.shell - - "<" 10
row "8. click to key delivered, keys chip" ms click.keys - -
