#!/usr/bin/env bash
# Times the Permissions page for product trees of 1,000, 10,000 and 100,000 files under Xvfb:
# the collector's walk, the page's first showing (layout and first paint) with the peak memory of
# that process, and the whole program's launch to its main window, once with the page behind
# another and once in front (a link to nothing is not writable, so the page has an error and comes
# first), and a "Remove" link's click until the page shows again. Prints one table; each figure
# is the median of RUNS runs (3 unless set). Run it from a
# built tree: bench/permissions.sh [COUNTS]
set -euo pipefail
cd "$(dirname "$0")/.."
driver=build/bench/corvanta-permissions-bench
program=build/corvanta-support
[ -x "$driver" ] && [ -x "$program" ] || cmake --build build --target corvanta-permissions-bench corvanta-support
runs=${RUNS:-3}
counts=${*:-1000 10000 100000}

work=$(mktemp -d)
server=
cleanup() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
display=:$((RANDOM % 100 + 300))
Xvfb "$display" -nolisten tcp -noreset -screen 0 1920x1080x24 >/dev/null 2>&1 &
server=$!
export DISPLAY=$display QT_QPA_PLATFORM=xcb
until xdotool getdisplaygeometry >/dev/null 2>&1; do sleep 0.05; done
# Nothing reaches the internet: the System page's requests meet a closed loopback port.
export http_proxy=http://127.0.0.1:9 https_proxy=http://127.0.0.1:9 no_proxy=localhost,127.0.0.1

# A home whose product data folder holds the files, 100 to a folder, as its caches do.
make_home() { # home count
    python3 - "$1" "$2" <<'PY'
import os, sys
home, count = sys.argv[1], int(sys.argv[2])
data = os.path.join(home, ".local/share/Corvanta")
os.makedirs(os.path.join(data, "temp"))
os.makedirs(os.path.join(home, ".config/Kelvanmoor"))
open(os.path.join(home, ".config/Kelvanmoor/Corvanta.ini"), "w").write("[General]\n")
open(os.path.join(data, "userUUID.txt"), "w").write("6f1c2d3e-0000-4000-8000-0123456789ab")
for i in range(count):
    folder = os.path.join(data, "plasmids", "set%04d" % (i // 100))
    if i % 100 == 0:
        os.makedirs(folder)
    open(os.path.join(folder, "plasmid%06d.dna" % i), "w").write("ACGT")
PY
}

# Launch to the 960x540 main window, in milliseconds.
window_ms() { # home
    local start end pid
    start=$(date +%s%N)
    HOME=$1 XDG_DATA_HOME=$1/.local/share XDG_CONFIG_HOME=$1/.config XDG_CACHE_HOME=$1/.cache \
        "$program" >/dev/null 2>&1 &
    pid=$!
    until xdotool search --all --onlyvisible --pid "$pid" --name '^Corvanta Support$' 2>/dev/null |
        xargs -r -n1 xdotool getwindowgeometry 2>/dev/null | grep -q 'Geometry: 960x540'; do
        sleep 0.005
    done
    end=$(date +%s%N)
    kill "$pid"
    wait "$pid" 2>/dev/null || true
    echo $(((end - start) / 1000000))
}

median() { printf '%s\n' "$@" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }

printf '%8s %8s %10s %10s %10s %12s %12s %10s\n' files paths "walk ms" "page ms" "peak KiB" \
    "window ms" "page first" "remove ms"
for count in $counts; do
    home=$work/home-$count
    make_home "$home" "$count"
    walks=() pages=() peaks=() windows=() firsts=() removes=() paths=0
    for _ in $(seq "$runs"); do
        read -r paths walk page peak remove < <(HOME=$home XDG_DATA_HOME=$home/.local/share \
            XDG_CONFIG_HOME=$home/.config XDG_CACHE_HOME=$home/.cache "$driver" 2>/dev/null)
        walks+=("$walk") pages+=("$page") peaks+=("$peak") removes+=("$remove")
        # The click put the file into the trash; the next run finds it back in place.
        printf '6f1c2d3e-0000-4000-8000-0123456789ab' >"$home/.local/share/Corvanta/userUUID.txt"
        rm -rf "$home/.local/share/Trash"
        windows+=("$(window_ms "$home")")
    done
    ln -s nowhere "$home/.local/share/Corvanta/dangling"
    for _ in $(seq "$runs"); do
        firsts+=("$(window_ms "$home")")
    done
    printf '%8d %8d %10s %10s %10s %12s %12s %10s\n' "$count" "$paths" "$(median "${walks[@]}")" \
        "$(median "${pages[@]}")" "$(median "${peaks[@]}")" "$(median "${windows[@]}")" \
        "$(median "${firsts[@]}")" "$(median "${removes[@]}")"
    rm -rf "$home"
done
