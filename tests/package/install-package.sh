#!/usr/bin/env bash
# Builds the Debian package of a built tree and installs it into a scratch folder, never into the system:
# the program must run from there, with the files a desktop needs beside it. Also installs the tree with
# a prefix and DESTDIR, which must keep everything under DESTDIR. install-package.sh BUILD_FOLDER
set -euo pipefail
build=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "install-package: $*" >&2
    exit 1
}

# Every file a desktop looks for, relative to the prefix.
expected_files=(
    bin/vantril
    lib/vantril/libvantril-desktop-entries.so
    share/applications/vantril.desktop
    share/metainfo/io.github.vantril.Vantril.metainfo.xml
    share/man/man1/vantril.1
    share/icons/hicolor/scalable/apps/vantril.svg
    share/vantril/kwin/front-application.js
    share/gnome-shell/extensions/vantril@vantril.github.io/metadata.json
    share/gnome-shell/extensions/vantril@vantril.github.io/extension.js
)
for size in 16 22 24 32 48 64 128 256; do
    expected_files+=("share/icons/hicolor/${size}x${size}/apps/vantril.png")
done

DESTDIR="$scratch/destdir" cmake --install "$build" --prefix /opt/vantril >/dev/null ||
    fail "cmake --install failed"
for file in "${expected_files[@]}"; do
    [[ -e "$scratch/destdir/opt/vantril/$file" ]] || fail "make install did not install $file under DESTDIR"
done

(cd "$build" && cpack --config CPackConfig.cmake -B "$scratch/package" >"$scratch/cpack.log" 2>&1) ||
    { cat "$scratch/cpack.log"; fail "cpack failed"; }
packages=("$scratch"/package/vantril_*.deb)
[[ -f "${packages[0]}" ]] || fail "cpack made no vantril_*.deb"
package=${packages[0]}

# dpkg-shlibdeps must have found the libraries the program links.
depends=$(dpkg-deb --field "$package" Depends)
for library in libqt6core6 libqt6gui6 libqt6widgets6 libglib2.0-0 libxcb1 libc6; do
    [[ "$depends" == *"$library"* ]] || fail "Depends lacks $library: $depends"
done
[[ "$depends" == *adwaita-icon-theme* ]] || fail "Depends lacks the icon theme: $depends"

dpkg-deb -x "$package" "$scratch/root"
for file in "${expected_files[@]}"; do
    [[ -e "$scratch/root/usr/$file" ]] || fail "the package lacks /usr/$file"
done

vantril="$scratch/root/usr/bin/vantril"
version=$("$vantril" --version) || fail "vantril --version failed"
[[ "$version" == "vantril $(dpkg-deb --field "$package" Version)" ]] || fail "vantril --version said: $version"

printf '{"buttons": [{"title": "Home", "symbol": "house", "action": "open", "argument": "~"}]}' >"$scratch/good.json"
[[ "$("$vantril" --check "$scratch/good.json")" == ok ]] || fail "vantril --check rejected a good file"
printf '{"buttons": [{"title": "Home"}]}' >"$scratch/bad.json"
if "$vantril" --check "$scratch/bad.json" >/dev/null; then
    fail "vantril --check accepted a file without symbol and action"
fi
echo "installed and ran $(basename "$package")"
