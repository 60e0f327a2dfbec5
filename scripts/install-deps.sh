#!/usr/bin/env bash
# Installs the Debian 12 packages that building (and, with "test", testing, with "bench", measuring) Vantril
# needs.
# Only missing packages are installed; nothing is done when everything is there.
set -euo pipefail

build_packages=(cmake make g++ pkg-config qt6-base-dev qt6-base-dev-tools qt6-qpa-plugins libgl-dev
    libxcb1-dev libxcb-xtest0-dev libxcb-keysyms1-dev libx11-dev libglib2.0-dev
    libxcb-xinput-dev libxcb-shape0-dev
    libqt6svg6 shared-mime-info xdg-utils adwaita-icon-theme dbus)
test_packages=(clang-format xvfb xauth openbox xdotool x11-utils x11-xserver-utils xclip imagemagick trayer)
# The benchmarks' window watcher, and the private X session they run in.
bench_packages=(libxcb-damage0-dev xvfb xauth openbox x11-utils)

packages=("${build_packages[@]}")
if [[ "${1:-build}" == "test" ]]; then
    packages+=("${test_packages[@]}")
elif [[ "${1:-build}" == "bench" ]]; then
    packages+=("${bench_packages[@]}")
fi

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
