#!/usr/bin/env bash
# Installs the Debian 12 packages that building Vantril needs; with "test", testing; with "desktops",
# testing under every window manager of the desktop matrix; with "fuzz", fuzzing; with "package", making
# its Debian package; with "bench", measuring it.
# Only missing packages are installed; nothing is done when everything is there.
set -euo pipefail

build_packages=(cmake make g++ pkg-config qt6-base-dev qt6-base-dev-tools qt6-qpa-plugins libgl-dev
    libxcb1-dev libxcb-xtest0-dev libxcb-keysyms1-dev libx11-dev libglib2.0-dev
    libxcb-xinput-dev libxcb-shape0-dev libxcb-sync-dev libfontconfig-dev
    libqt6svg6 shared-mime-info xdg-utils adwaita-icon-theme dbus)
# openbox for every end-to-end test; xfwm4, fluxbox and i3 for the part of the window-manager matrix
# `make test` runs; mutter, weston and xwayland for the headless Wayland sessions; the validators of the
# desktop entry, AppStream data and manual page, and dpkg-dev for the package.
test_packages=(clang-format xvfb xauth openbox xfwm4 fluxbox i3-wm xdotool x11-utils x11-xserver-utils xclip
    imagemagick trayer desktop-file-utils appstream man-db groff-base dpkg-dev mutter weston xwayland)
# The rest of the window managers of the matrix. marco aborts without the MATE mouse settings schema, which
# comes with the settings daemon's data, not with marco itself.
desktop_packages=(mutter kwin-x11 marco mate-settings-daemon-common metacity icewm)
# libFuzzer and the sanitizers' run-time come with clang.
fuzz_packages=(clang-14 libclang-rt-14-dev)
# dpkg-shlibdeps works out what the package depends on.
package_packages=(dpkg-dev)
# The benchmarks' window watcher, and the private X session they run in.
bench_packages=(libxcb-damage0-dev xvfb xauth openbox x11-utils)

packages=("${build_packages[@]}")
case "${1:-build}" in
test) packages+=("${test_packages[@]}" "${fuzz_packages[@]}") ;;
desktops) packages+=("${test_packages[@]}" "${desktop_packages[@]}") ;;
fuzz) packages+=("${fuzz_packages[@]}") ;;
package) packages+=("${package_packages[@]}") ;;
bench) packages+=("${bench_packages[@]}") ;;
esac

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
if [[ $(id -u) -eq 0 ]]; then
    sudo=()
elif command -v sudo >/dev/null; then
    sudo=(sudo)
else
    echo "These packages are missing and neither root nor sudo is available: ${missing[*]}" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
