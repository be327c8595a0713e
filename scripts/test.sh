#!/usr/bin/env bash
# Builds, then runs every test: the Qt suites, the Win32 layer under Wine and the end-to-end tests
# under Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
ctest --test-dir build --output-on-failure --timeout 900
