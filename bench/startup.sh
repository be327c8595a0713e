#!/usr/bin/env bash
# Measures how long the window takes from launch to showing its main window under Xvfb at
# 1920x1080, and the process's peak memory by then; prints the medians of RUNS runs. Nothing
# leaves the machine: the program runs in a private network namespace with no network to reach.
# A second line gives the median time on a network whose TLS endpoints accept a connection and
# never answer, built in a private network and mount namespace. When the Windows build is there
# (scripts/build-windows.sh), a third gives the installed Windows program's time under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."
program=$PWD/build/corvanta-support

# Starts the program, waits for its main window (half the screen; the progress dialog is 300
# pixels wide) and ends the program by its process id. Prints milliseconds and peak KiB.
measure() {
    local start end pid peak
    start=$(date +%s%N)
    "$program" 2>/dev/null &
    pid=$!
    until xdotool search --onlyvisible --name '^Corvanta Support$' 2>/dev/null |
        xargs -r -n1 xdotool getwindowgeometry 2>/dev/null | grep -q 'Geometry: 960x540'; do
        sleep 0.005
    done
    end=$(date +%s%N)
    peak=$(awk '/^VmHWM:/ {print $2}' "/proc/$pid/status")
    kill -TERM "$pid"
    wait "$pid" || true
    echo "$(((end - start) / 1000000)) $peak"
}

# Run again by itself inside a private network namespace, with nothing to reach.
if [ "${1:-}" = --offline ]; then
    measure
    exit 0
fi

# Run again by itself inside "unshare -rmn": the address service's and the probe's host names
# lead to a loopback server that takes connections on the TLS port and never answers.
if [ "${1:-}" = --silent-network ]; then
    unset http_proxy https_proxy no_proxy
    ip link set lo up
    printf '127.0.0.1 localhost\n127.0.0.2 api.ipify.org www.kelvanmoor.com\n' >"$HOME/hosts"
    mount --bind "$HOME/hosts" /etc/hosts
    python3 -c 'import socket, time
s = socket.socket()
s.bind(("127.0.0.2", 443))
s.listen(64)
time.sleep(3600)' &
    silent=$!
    until (exec 3<>/dev/tcp/127.0.0.2/443) 2>/dev/null; do sleep 0.05; done
    read -r milliseconds _ < <(measure)
    kill "$silent"
    echo "$milliseconds"
    exit 0
fi

[ -x "$program" ] || scripts/build.sh
runs=${RUNS:-5}
display=:$((RANDOM % 100 + 200))
Xvfb "$display" -nolisten tcp -noreset -screen 0 1920x1080x24 >/dev/null 2>&1 &
server=$!
home=$(mktemp -d)
trap 'kill $server 2>/dev/null; rm -rf "$home"' EXIT
export DISPLAY=$display HOME=$home
until xdotool getdisplaygeometry >/dev/null 2>&1; do sleep 0.05; done

times=()
memories=()
for _ in $(seq "$runs"); do
    read -r milliseconds peak < <(unshare -rn "$0" --offline)
    times+=("$milliseconds")
    memories+=("$peak")
done
median() { printf '%s\n' "$@" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
echo "median of $runs runs: $(median "${times[@]}") ms to the main window, peak memory $(median "${memories[@]}") KiB"
silent=()
for _ in $(seq "$runs"); do
    silent+=("$(unshare -rmn "$0" --silent-network)")
done
echo "network that never answers, median of $runs runs: $(median "${silent[@]}") ms to the main window"
if [ -f build-windows/CPackConfig.cmake ]; then
    # The installer's own check installs it into a fresh prefix and times the launch.
    wine=$(packaging/check-installer.sh build-windows 2>/dev/null | awk '/^launch to main window:/ {print $5}')
    echo "installed Windows program under Wine: ${wine:-?} ms to the main window"
fi
