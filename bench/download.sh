#!/usr/bin/env bash
# Downloads 1 MiB and 64 MiB from a loopback HTTP server through download(...), into a file and
# into memory, through Qt's access manager alone, and with curl from the same server; prints the
# median throughput and peak memory of each and its throughput against curl's. 1 GiB goes only
# into a file (by download(...) and curl, RUNS_LARGE times), where peak memory shows that the body
# streams through rather than piling up.
# Run it from a built tree: bench/download.sh
set -euo pipefail
cd "$(dirname "$0")/.."

need=()
command -v curl >/dev/null || need+=(curl)
[ -x /usr/bin/time ] || need+=(time)
if [ ${#need[@]} -gt 0 ]; then
    sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
driver=build/bench/corvanta-download-bench
[ -x "$driver" ] || cmake --build build --target corvanta-download-bench
runs=${RUNS:-5}
runs_large=${RUNS_LARGE:-1}

work=$(mktemp -d)
server=
cleanup() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
# Nothing leaves the machine: proxies point at a closed loopback port that the server bypasses.
export http_proxy=http://127.0.0.1:9 https_proxy=http://127.0.0.1:9 no_proxy=127.0.0.1,localhost
# The tool's settings and temporary files stay in a home of the benchmark's own.
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
mkdir -p "$work/www" "$work/home"
for size in 1 64 1024; do head -c "${size}M" /dev/urandom >"$work/www/$size.bin"; done

python3 -u -m http.server --bind 127.0.0.1 --directory "$work/www" 0 >"$work/server.log" 2>&1 &
server=$!
port=
until [ -n "$port" ]; do
    sleep 0.05
    port=$(sed -n 's/.* port \([0-9]*\).*/\1/p' "$work/server.log")
done

# One line per run: tool, MiB, bytes, seconds, peak resident KiB.
results=$work/results.txt
for size in 1 64 1024; do
    url=http://127.0.0.1:$port/$size.bin
    tools="ours-file ours-memory qt-alone curl"
    count=$runs
    [ "$size" -lt 1024 ] || { tools="ours-file curl"; count=$runs_large; }
    for run in $(seq "$count"); do
        for tool in $tools; do
            rm -f "$work/out.bin"
            case $tool in
            ours-file) command=("$driver" "$url" "$work/out.bin") ;;
            ours-memory) command=("$driver" "$url") ;;
            qt-alone) command=("$driver" --qt-alone "$url" "$work/out.bin") ;;
            curl) command=(curl -sS -o "$work/out.bin" -w '%{size_download} %{time_total}\n' "$url") ;;
            esac
            figures=$(/usr/bin/time -v -o "$work/time.txt" "${command[@]}" 2>/dev/null)
            [ "$tool" = ours-memory ] || cmp -s "$work/out.bin" "$work/www/$size.bin" ||
                { echo "$tool fetched a wrong $size MiB file" >&2; exit 1; }
            peak=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$work/time.txt")
            echo "$tool $size $figures $peak" >>"$results"
        done
    done
done

python3 - "$results" "$runs" "$runs_large" <<'PY'
import statistics, sys
rows = [line.split() for line in open(sys.argv[1])]
print(f"Loopback HTTP (python3 http.server), median of {sys.argv[2]} runs each "
      f"({sys.argv[3]} for 1 GiB)")
print(f"{'body':>8} {'tool':<34}{'MiB/s':>9}{'vs curl':>9}{'peak RSS MiB':>14}")
names = {"ours-file": "download(url, destination)",
         "ours-memory": "download(url) into memory",
         "qt-alone": "QNetworkAccessManager alone", "curl": "curl -o file"}
for size in ("1", "64", "1024"):
    rate, peak = {}, {}
    for tool in [t for t in names if any(r[0] == t and r[1] == size for r in rows)]:
        runs = [r for r in rows if r[0] == tool and r[1] == size]
        rate[tool] = statistics.median(int(r[2]) / float(r[3]) / 2**20 for r in runs)
        peak[tool] = statistics.median(int(r[4]) for r in runs) / 1024
    for tool in rate:
        name = names[tool]
        print(f"{size + ' MiB':>8} {name:<34}{rate[tool]:>9.0f}{rate[tool] / rate['curl']:>8.2f}x"
              f"{peak[tool]:>14.1f}")
PY
