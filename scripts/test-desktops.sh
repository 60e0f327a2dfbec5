#!/usr/bin/env bash
# Runs the window-manager matrix: the end-to-end checks of tests/x11/desktop-scenarios.txt under each
# window manager, each suite in a session of its own, then prints a table of window manager by check.
# Usage: scripts/test-desktops.sh [WM...]   (default: all of them; names as with-x-session.sh takes them,
# and mutter-wayland or weston-wayland for a headless Wayland session of tests/wayland/with-wayland-session.sh)
# Expects a build in ./build (make test-desktops builds it first). Exits 1 when a check failed.
set -u
cd "$(dirname "$0")/.."

managers=("$@")
[ ${#managers[@]} -eq 0 ] && managers=(openbox mutter kwin xfwm4 xfwm4-composite marco metacity fluxbox icewm i3 mutter-wayland)
scenarios_file=tests/x11/desktop-scenarios.txt
results=$(realpath -m "${VANTRIL_DESKTOP_RESULTS:-build/desktop-results}")
rm -rf "$results"
mkdir -p "$results"

scenarios=()
declare -A suite_of functions_of
while read -r scenario suite functions; do
    [[ -z "$scenario" || "$scenario" == \#* ]] && continue
    scenarios+=("$scenario")
    suite_of[$scenario]=$suite
    functions_of[$scenario]=$functions
done <"$scenarios_file"
suites=$(printf '%s\n' "${suite_of[@]}" | sort -u)

started=$(date +%s)
for wm in "${managers[@]}"; do
    wm_started=$(date +%s)
    for suite in $suites; do
        functions=()
        for scenario in "${scenarios[@]}"; do
            [ "${suite_of[$scenario]}" = "$suite" ] && functions+=(${functions_of[$scenario]})
        done
        echo "== $wm: $suite ${functions[*]}" >&2
        case "$wm" in
        # A Wayland session: the compositor, with XWayland, is the window manager.
        *-wayland) session=(env VANTRIL_TEST_COMPOSITOR="${wm%-wayland}" tests/wayland/with-wayland-session.sh) ;;
        *) session=(env VANTRIL_TEST_WM="$wm" tests/x11/with-x-session.sh) ;;
        esac
        timeout 900 "${session[@]}" "build/tests/$suite" "${functions[@]}" \
            -o "$results/$wm.$suite.txt,txt" >"$results/$wm.$suite.log" 2>&1
    done
    echo "$(($(date +%s) - wm_started))" >"$results/$wm.seconds"
done
total=$(($(date +%s) - started))

# One cell: pass when every function passed, FAIL when one failed or never reported, else the first
# skip's reason.
cell() {
    local wm=$1 scenario=$2 file function line verdict=pass reason=
    file="$results/$wm.${suite_of[$scenario]}.txt"
    for function in ${functions_of[$scenario]}; do
        line=$(grep -E "^(PASS|FAIL!|SKIP) +: [A-Za-z]+::$function\(\)" "$file" 2>/dev/null | head -1)
        case "$line" in
        PASS*) ;;
        SKIP*)
            # The reason follows the function's name, or stands on the next line when it is long.
            [ "$verdict" = pass ] && verdict=skip && reason=$(echo "$line" | sed 's/^[^)]*) *//')
            [ -z "$reason" ] && reason=$(sed -n "/::$function()/{n;/Loc:/q;s/^ *//;p;q}" "$file" 2>/dev/null)
            ;;
        *) verdict=FAIL ;;
        esac
    done
    case "$verdict" in
    skip) echo "skipped: $reason" ;;
    *) echo "$verdict" ;;
    esac
}

failed=0
{
    printf '| window manager |'
    printf ' %s |' "${scenarios[@]}"
    printf ' seconds |\n|---|'
    printf -- '---|%.0s' "${scenarios[@]}"
    printf -- '---|\n'
    for wm in "${managers[@]}"; do
        printf '| %s |' "$wm"
        for scenario in "${scenarios[@]}"; do
            verdict=$(cell "$wm" "$scenario")
            [ "$verdict" = FAIL ] && failed=1
            printf ' %s |' "$verdict"
        done
        printf ' %s |\n' "$(cat "$results/$wm.seconds" 2>/dev/null)"
    done
} >"$results/table.md"
cat "$results/table.md"
echo "Whole matrix: ${total} s. Logs and QtTest reports: $results/"
if [ "$failed" -ne 0 ]; then
    echo "Failures:"
    grep -H -A2 '^FAIL!' "$results"/*.txt | sed 's/^/  /'
fi
exit "$failed"
