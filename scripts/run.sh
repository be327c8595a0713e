#!/usr/bin/env bash
# Builds, then runs the window on a desktop, or prints the report when there is no display.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec build/corvanta-support "$@"
fi
exec build/corvanta-support-report "$@"
