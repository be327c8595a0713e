#!/usr/bin/env bash
# Times the headless report beside other system-report tools on this machine, in one run, and
# prints the mean (of 30 runs) and median of each and its ratio to ours. Run it from a built tree: bench/report.sh
set -euo pipefail
cd "$(dirname "$0")/.."

need=()
command -v hyperfine >/dev/null || need+=(hyperfine)
command -v inxi >/dev/null || need+=(inxi)
command -v neofetch >/dev/null || need+=(neofetch)
[ -x /usr/lib/qt6/bin/qtdiag6 ] || need+=(qt6-tools-dev-tools)
if [ ${#need[@]} -gt 0 ]; then
    sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
report=build/corvanta-support-report
[ -x "$report" ] || scripts/build.sh

# The same footing for every tool: no display, the offscreen platform for the Qt ones, and no
# network at all (a private, empty network namespace), so nothing depends on a far server.
export QT_QPA_PLATFORM=offscreen
unset DISPLAY WAYLAND_DISPLAY
results=$(mktemp --suffix=.json)
trap 'rm -f "$results"' EXIT
unshare -rn hyperfine -N --warmup 3 --runs "${RUNS:-30}" --export-json "$results" --style basic \
    -n corvanta-support-report "$report" \
    -n qtdiag6 "/usr/lib/qt6/bin/qtdiag6" \
    -n "inxi -Fxz" "inxi -Fxz -c0" \
    -n neofetch "neofetch --stdout" >/dev/null

python3 - "$results" <<'PY'
import json, sys
runs = json.load(open(sys.argv[1]))["results"]
ours = runs[0]
print(f"{'tool':<26}{'mean ms':>10}{'median ms':>12}{'vs ours':>10}")
for run in runs:
    print(f"{run['command']:<26}{run['mean'] * 1000:>10.1f}{run['median'] * 1000:>12.1f}"
          f"{run['mean'] / ours['mean']:>9.2f}x")
PY
