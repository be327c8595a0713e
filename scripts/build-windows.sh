#!/usr/bin/env bash
# Builds the Windows programs and their Qt test suites into ./build-windows with
# MinGW-w64, against Qt 6.4.2 for MinGW in ./build-qt-mingw: unpacked from
# ../shared/qt-mingw/qt6-mingw-6.4.2.tar.xz (or $CORVANTA_QT_MINGW_ARCHIVE) when there is one,
# otherwise built from Debian's source by scripts/build-qt-mingw.sh (about an hour).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

qt=$PWD/build-qt-mingw
archive=${CORVANTA_QT_MINGW_ARCHIVE:-../shared/qt-mingw/qt6-mingw-6.4.2.tar.xz}
if [ ! -f "$qt/lib/cmake/Qt6/Qt6Config.cmake" ]; then
    rm -rf "$qt"
    mkdir -p "$qt"
    if [ -f "$archive" ]; then
        tar -C "$qt" -xJf "$archive"
    else
        scripts/build-qt-mingw.sh "$qt" "$PWD/build-qt-mingw-source"
    fi
fi

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B build-windows -G Ninja -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" -DCORVANTA_QT_PREFIX="$qt"
cmake --build build-windows --parallel
