#!/usr/bin/env bash
# Builds Qt 6.4.2 (qtbase: Core, Gui, Widgets, Network, Test, Concurrent, Xml) for 64-bit Windows
# with Debian's MinGW-w64 (POSIX threads), from Debian's own qt6-base source package, so the
# Windows program can be linked and run under Wine on a Debian 12 machine.
# Usage: build-qt-mingw.sh PREFIX [WORKDIR]   (about an hour on two cores)
# scripts/build-windows.sh runs it when no ready archive is at hand. The result, packed with
# `tar -C PREFIX -cJf qt6-mingw-6.4.2.tar.xz .`, is that archive; it is relocatable: point CMAKE_PREFIX_PATH (and the toolchain's CMAKE_FIND_ROOT_PATH) at
# wherever it is unpacked, with QT_HOST_PATH=/usr for Debian's moc, rcc and uic.
set -euo pipefail
prefix=$(readlink -f "${1:?usage: build-qt-mingw.sh PREFIX [WORKDIR]}")
work=$(readlink -m "${2:-${TMPDIR:-/tmp}/qt-mingw-build}")
here=$(dirname "$(readlink -f "$0")")
mkdir -p "$work" "$prefix"
cd "$work"

need=(g++-mingw-w64-x86-64-posix qt6-base-dev qt6-base-dev-tools qt6-tools-dev-tools cmake ninja-build perl xz-utils dpkg-dev)
missing=(); for p in "${need[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
((${#missing[@]} == 0)) || apt-get install -y --no-install-recommends "${missing[@]}"

if [ ! -d qtbase-everywhere-src-6.4.2 ]; then
  if [ ! -f qt6-base_6.4.2+dfsg.orig.tar.xz ]; then
    # Debian's source for the same Qt version as the host tools (moc, rcc, uic) that the cross
    # build runs.
    grep -rqs '^Types:.*deb-src' /etc/apt/sources.list.d/ || {
      sed 's/^Types: deb$/Types: deb-src/' /etc/apt/sources.list.d/debian.sources \
        > /etc/apt/sources.list.d/qt-mingw-src.sources
      apt-get update
    }
    apt-get source --download-only qt6-base=6.4.2+dfsg-10
  fi
  tar xJf qt6-base_6.4.2+dfsg.orig.tar.xz
fi

# Debian's source leaves out the Wintab header (its licence), so the Windows platform plugin is built
# without the Wintab tablet backend; pens still arrive through Windows' pointer messages.
plugin=qtbase-everywhere-src-6.4.2/src/plugins/platforms/windows
sed -i 's/CONDITION QT_FEATURE_tabletevent$/CONDITION FALSE/' "$plugin/CMakeLists.txt" \
    "$plugin/../direct2d/CMakeLists.txt"
sed -i 's/^#if QT_CONFIG(tabletevent)$/#if 0 \/\/ Wintab/' "$plugin/qwindowscontext.cpp"
sed -i '/^#if QT_CONFIG(tabletevent)$/{N;s/^#if QT_CONFIG(tabletevent)\n#  include "qwindowstabletsupport.h"/#if 0 \/\/ Wintab\n#  include "qwindowstabletsupport.h"/}' "$plugin/qwindowspointerhandler.cpp"
# Without OpenGL the plugin must not reach for the dynamic OpenGL loader either (Qt 6.4 still
# switches that feature on).
sed -i 's/^#if QT_CONFIG(dynamicgl)$/#if QT_CONFIG(dynamicgl) \&\& QT_CONFIG(opengl)/' "$plugin/qwindowswindow.cpp"

cat > toolchain.cmake <<'TC'
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
TC
# Source paths inside the libraries (assertion texts) name no folder of the building machine.
echo "set(CMAKE_C_FLAGS_INIT \"-ffile-prefix-map=$work/=/src/qt6/\")" >>toolchain.cmake
echo "set(CMAKE_CXX_FLAGS_INIT \"-ffile-prefix-map=$work/=/src/qt6/\")" >>toolchain.cmake

[ -f build/build.ninja ] || cmake -S qtbase-everywhere-src-6.4.2 -B build -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" \
  -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
  -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON \
  -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_BENCHMARKS=OFF \
  -DFEATURE_sql=OFF -DFEATURE_opengl=OFF -DFEATURE_dbus=OFF -DFEATURE_printsupport=OFF \
  -DFEATURE_openssl=OFF -DFEATURE_schannel=ON -DFEATURE_system_zlib=OFF \
  -DFEATURE_system_pcre2=OFF -DFEATURE_system_harfbuzz=OFF -DFEATURE_system_freetype=OFF \
  -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF -DFEATURE_system_doubleconversion=OFF \
  -DFEATURE_system_textmarkdownreader=OFF -DFEATURE_icu=OFF -DFEATURE_zstd=OFF
cmake --build build --parallel "${JOBS:-$(nproc)}"
cmake --install build
# The MinGW runtime DLLs that every program built with this compiler needs beside it.
for dll in libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll; do
  f=$(x86_64-w64-mingw32-g++-posix -print-file-name="$dll")
  [ -f "$f" ] || f=$(find /usr/lib/gcc/x86_64-w64-mingw32 /usr/x86_64-w64-mingw32 -name "$dll" | head -1)
  cp -L "$f" "$prefix/bin/"
done
find "$prefix" -name '*.dll' -exec x86_64-w64-mingw32-strip --strip-unneeded {} +
rm -rf "$prefix/doc"
# The install records where it was built (qmake's .prl files, pkg-config, qt.conf); those paths
# mean nothing elsewhere, and pkg-config is made relative to its own folder.
grep -rlI -e "$work/" -e "$prefix" "$prefix" | while read -r f; do
  sed -i -e "s|$prefix|/src/qt6/prefix|g" -e "s|$work/|/src/qt6/|g" "$f"
done
sed -i 's|^prefix=.*|prefix=${pcfiledir}/../..|' "$prefix"/lib/pkgconfig/*.pc
echo "Qt for MinGW installed in $prefix"
