#!/usr/bin/env bash
# Measures how long the window takes from launch to showing its main window under Xvfb at
# 1920x1080, and the process's peak memory; prints every run and the medians.
set -euo pipefail
cd "$(dirname "$0")/.."
program=build/corvanta-support
[ -x "$program" ] || scripts/build.sh
runs=${RUNS:-5}

display=:$((RANDOM % 100 + 200))
Xvfb "$display" -nolisten tcp -noreset -screen 0 1920x1080x24 >/dev/null 2>&1 &
server=$!
home=$(mktemp -d)
trap 'kill $server 2>/dev/null; rm -rf "$home"' EXIT
export DISPLAY=$display
until xdotool getdisplaygeometry >/dev/null 2>&1; do sleep 0.05; done

times=()
memories=()
for run in $(seq "$runs"); do
    stats=$(mktemp)
    start=$(date +%s%N)
    HOME=$home /usr/bin/time -f %M -o "$stats" "$program" 2>/dev/null &
    launcher=$!
    # The main window is the one of half the screen; the progress dialog is 300 pixels wide.
    until xdotool search --onlyvisible --name '^Corvanta Support$' 2>/dev/null |
        xargs -r -n1 xdotool getwindowgeometry 2>/dev/null | grep -q 'Geometry: 960x540'; do
        sleep 0.005
    done
    end=$(date +%s%N)
    pkill -TERM -f "^$program$" || true
    wait "$launcher" || true
    times+=($(((end - start) / 1000000)))
    memories+=($(tail -1 "$stats"))
    rm -f "$stats"
    echo "run $run: ${times[-1]} ms to the main window, peak ${memories[-1]} KiB"
done
median() { printf '%s\n' "$@" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
echo "median: $(median "${times[@]}") ms to the main window, peak memory $(median "${memories[@]}") KiB"
