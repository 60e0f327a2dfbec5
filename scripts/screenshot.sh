#!/usr/bin/env bash
# Takes the pictures of the bar used in the documentation, from the program in build/src/vantril:
# docs/bar.png (the bar alone), docs/flyout.png (the bar with the "Files" stack open), docs/preset.png
# (the bar with the GNOME Terminal preset as the buttons of the application in front) and
# docs/overflow.png (a bar with more buttons than the screen holds, its overflow chip open).
#
# Run it inside a private X session, so that it neither needs nor disturbs a desktop, and so that the
# bar shows the default buttons from a fresh configuration folder:
#     tests/x11/with-x-session.sh scripts/screenshot.sh
# Needs ImageMagick (import, convert), xsetroot, xprop, xwininfo and xdotool; uses xcompmgr when it is
# installed.
set -u

root=$(cd "$(dirname "$0")/.." && pwd)
binary="$root/build/src/vantril"
out="$root/docs"
margin=20

fail() {
    echo "screenshot: $*" >&2
    exit 1
}

[ -x "$binary" ] || fail "$binary is missing; build first (cmake --build --preset default)"
[ -n "${DISPLAY:-}" ] || fail "no X display; run it through tests/x11/with-x-session.sh"
for tool in import convert xsetroot xprop xwininfo xdotool; do
    command -v "$tool" >/dev/null || fail "$tool is not installed"
done
mkdir -p "$out"

helpers=()
vantril_pid=
cleanup() {
    local pid
    for pid in "$vantril_pid" "${helpers[@]}"; do
        [ -n "$pid" ] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
    done
}
trap cleanup EXIT

# A plain mid-tone shows both the dark plate and its transparent corners.
xsetroot -solid '#5a6e8c'
if command -v xcompmgr >/dev/null; then
    xcompmgr >/dev/null 2>&1 &
    helpers+=($!)
fi

# The managed window of process $1 titled exactly $2 (name searches elsewhere ignore case, and the
# program's hidden client leader is called "vantril" too), once it is on screen.
find_window() {
    local pid=$1 name=$2 window
    for window in $(xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -o '0x[0-9a-fA-F]*'); do
        xprop -id "$window" _NET_WM_PID 2>/dev/null | grep -q "= $pid\$" || continue
        [ "$(xprop -id "$window" _NET_WM_NAME 2>/dev/null)" = "_NET_WM_NAME(UTF8_STRING) = \"$name\"" ] ||
            continue
        xwininfo -id "$window" 2>/dev/null | grep -q 'Map State: IsViewable' || continue
        echo "$window"
        return 0
    done
    return 1
}

# Polls for the window for up to 20 seconds.
wait_window() {
    local tries
    for tries in $(seq 200); do
        find_window "$@" && return 0
        kill -0 "$1" 2>/dev/null || return 1
        sleep 0.1
    done
    return 1
}

# "x y width height" of a window on the screen.
frame_of() {
    xwininfo -id "$1" | awk '
        /Absolute upper-left X/ { x = $NF }
        /Absolute upper-left Y/ { y = $NF }
        /Width:/ { w = $NF }
        /Height:/ { h = $NF }
        END { print x, y, w, h }'
}

# The screen between the given frames' outer edges, widened by the margin, saved to $1.
shoot() {
    local file=$1 screen_w screen_h
    shift
    read -r screen_w screen_h < <(xwininfo -root | awk '/Width:/ { w = $NF } /Height:/ { h = $NF } END { print w, h }')
    local left=$screen_w top=$screen_h right=0 bottom=0 x y w h
    while [ $# -gt 0 ]; do
        read -r x y w h <<<"$1"
        shift
        ((x < left)) && left=$x
        ((y < top)) && top=$y
        ((x + w > right)) && right=$((x + w))
        ((y + h > bottom)) && bottom=$((y + h))
    done
    left=$((left - margin < 0 ? 0 : left - margin))
    top=$((top - margin < 0 ? 0 : top - margin))
    right=$((right + margin > screen_w ? screen_w : right + margin))
    bottom=$((bottom + margin > screen_h ? screen_h : bottom + margin))
    import -window root "$file.full.png" || fail "import failed"
    convert "$file.full.png" -crop "$((right - left))x$((bottom - top))+$left+$top" +repage "$file" ||
        fail "convert failed"
    rm -f "$file.full.png"
    echo "wrote $file"
}

# Starts the program with the given extra variables; sets vantril_pid and bar.
start() {
    env "$@" "$binary" >/dev/null 2>&1 &
    vantril_pid=$!
    bar=$(wait_window "$vantril_pid" Vantril) || fail "the bar did not appear"
}

stop() {
    kill "$vantril_pid" 2>/dev/null
    wait "$vantril_pid" 2>/dev/null
    vantril_pid=
}

# The window manager maps a window before the program has painted it; a short settle keeps a blank
# frame out of the picture.
settle() {
    sleep 1
}

start
settle
shoot "$out/bar.png" "$(frame_of "$bar")"
stop

start VANTRIL_OPEN=Files
flyout=$(wait_window "$vantril_pid" "Vantril flyout") || fail "the flyout did not open"
settle
shoot "$out/flyout.png" "$(frame_of "$bar")" "$(frame_of "$flyout")"
stop

# The buttons of the application in front follow the separator; here those of a terminal, after two
# shared chips, so that the whole preset fits on the screen.
terminal=$(mktemp -d)
cat >"$terminal/buttons.json" <<'BUTTONS'
{"buttons": [
 {"title": "Home", "symbol": "house", "action": "folder", "argument": "~"},
 {"title": "Web", "symbol": "globe", "action": "url", "argument": "https://www.debian.org"}
]}
BUTTONS
start VANTRIL_CONFIG_DIR="$terminal" VANTRIL_PRESET="GNOME Terminal" \
    VANTRIL_CONTEXT_APP="org.gnome.Terminal|Terminal"
settle
shoot "$out/preset.png" "$(frame_of "$bar")"
stop
rm -rf "$terminal"

# Far more buttons than fit: the bar keeps to the screen and the rest wait in the overflow chip "»".
crowded=$(mktemp -d)
{
    echo '{"buttons": ['
    separator=
    while IFS='|' read -r title symbol action argument color; do
        printf '%s{"title": "%s", "symbol": "%s", "action": "%s", "argument": "%s", "color": "%s"}\n' \
            "$separator" "$title" "$symbol" "$action" "$argument" "$color"
        separator=,
    done <<'BUTTONS'
Downloads|arrow.down.circle|open|~/Downloads|orange
Documents|doc.text|open|~/Documents|orange
Projects|folder|folder|~/Projects|orange
Mail|envelope|app|Mail|cyan
Calendar|calendar|app|Calendar|cyan
Terminal|terminal|app|Terminal|cyan
Text Editor|note.text|app|Text Editor|cyan
Debian News|globe|url|https://www.debian.org/News/|purple
Weather|moon|url|https://example.org/weather|purple
Build Status|bolt|url|https://example.org/ci|purple
Copy Address|doc.on.clipboard|paste|221B Baker Street|green
Signature|square.and.pencil|paste|Kind regards|green
Screenshot|camera|keys|super+shift+s|yellow
Lock Screen|power|keys|super+l|yellow
Update System|arrow.clockwise|shell|sudo apt update|red
Backup Photos|photo|shell|rsync -a ~/Pictures /media/backup|red
Music|music.note|app|Rhythmbox|cyan
Printer|printer|app|system-config-printer|cyan
Bookmarks|bookmark|url|https://example.org/bookmarks|purple
Search|magnifyingglass|url|https://duckduckgo.com|purple
Notes|note.text|open|~/Notes|orange
Invoices|tablecells|open|~/Documents/Invoices|orange
Meeting Notes|text.bubble|open|~/Documents/Meetings|orange
Reports|doc.plaintext|folder|~/Documents/Reports|orange
Keyboard Layout|keyboard|shell|setxkbmap -layout us|red
Night Light|moon|shell|redshift -O 4500|red
Timer|clock|shell|sleep 1500; notify-send Break|red
Favourites|star|folder|~/Favourites|orange
Messages|text.bubble|app|Messages|cyan
Photos|photo|folder|~/Pictures|orange
Videos|camera|folder|~/Videos|orange
Archive|archivebox|folder|~/Archive|orange
Trash|trash|open|trash:///|white
Settings|gearshape|app|Settings|white
Help Pages|questionmark.circle|url|https://example.org/help|white
BUTTONS
    echo ']}'
} >"$crowded/buttons.json"
start VANTRIL_CONFIG_DIR="$crowded"
settle
read -r bar_x bar_y bar_w bar_h <<<"$(frame_of "$bar")"
# The overflow chip ends the row, 12 pixels inside the bar's right edge.
xdotool mousemove $((bar_x + bar_w - 12 - 12)) $((bar_y + bar_h / 2)) click 1
flyout=$(wait_window "$vantril_pid" "Vantril flyout") || fail "the overflow did not open"
# Away from the chips, so that no tool tip shows.
xdotool mousemove 5 5
settle
shoot "$out/overflow.png" "$(frame_of "$bar")" "$(frame_of "$flyout")"
stop
rm -rf "$crowded"