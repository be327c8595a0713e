#!/usr/bin/env bash
# Installs what is missing, then configures and builds into ./build.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}"
cmake --build build --parallel
