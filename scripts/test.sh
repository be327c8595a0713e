#!/usr/bin/env bash
# Builds, then runs every test: the Qt suites, the Win32 layer under Wine, the Windows sources
# compiled with MinGW, the packaging and translation checks and the end-to-end tests under Xvfb.
# Then the Windows build against Qt for MinGW in build-windows: its Qt suites under Wine and the
# installer, installed and used under Wine.
# Then the Qt suites again, built with AddressSanitizer and UndefinedBehaviorSanitizer in
# build-asan, and every fuzz harness over its seed corpus, built with clang in build-fuzz.
# Every stage runs; the script fails when any of them did.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=()

scripts/build.sh
ctest --test-dir build --output-on-failure --timeout 900 || failed+=(tests)

scripts/build-windows.sh
ctest --test-dir build-windows --output-on-failure --timeout 900 || failed+=(windows)

# -O1 with line tables only compiles in two thirds of the time and reports still give file and
# line. The packaging and translation checks are not run again there: they examine files, not
# running code of ours (a package of sanitized programs is not one anybody ships), and passed above.
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANTA_SANITIZE=ON "${launcher[@]}" \
    "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG"
cmake --build build-asan --parallel
# A sanitized program runs several times slower, and the end-to-end tests still open menus with
# keys paced for the plain build: a test that fails there gets one more run. The plain run above
# has no retries.
ctest --test-dir build-asan --output-on-failure --timeout 900 -LE '^(packaging|translations)$' \
    --repeat until-pass:2 || failed+=(sanitizers)

# A regression run of seconds; bench/fuzz.sh fuzzes for as long as asked.
cmake -S fuzz -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ "${launcher[@]}"
cmake --build build-fuzz --parallel
ctest --test-dir build-fuzz --output-on-failure || failed+=(fuzz)

[ ${#failed[@]} -eq 0 ] || { echo "Failed: ${failed[*]}" >&2; exit 1; }
