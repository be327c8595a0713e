#!/usr/bin/env bash
# Installs, from Debian's packages, whatever this machine lacks to build, run and test the tool.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-tools-dev qt6-l10n-tools libgl-dev qt6-qpa-plugins libglib2.0-dev
    xvfb xauth xdotool xclip x11-utils trash-cli xdg-utils dbus dbus-x11 shared-mime-info
    at-spi2-core
    fonts-dejavu-core openssl curl librsvg2-bin iproute2 ccache
    g++-mingw-w64-x86-64-posix wine64 googletest nsis icoutils xz-utils
    dpkg-dev file lintian desktop-file-utils appstream qt6-translations-l10n python3-jsonschema
    clang libclang-rt-14-dev libglib2.0-bin
)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" \
        || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
echo "Installing: ${missing[*]}"
"${sudo[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
