#!/usr/bin/env bash
# Runs the file I/O benchmark headless on tmpfs and on the disk, prints its total time and the
# median of every operation, and compares its 1048-byte sequential reads and writes on a 1 MiB file
# with fio doing the same (one read or write system call per block, page cache kept). Figures are
# per-operation latency in microseconds. Run it from a built tree: bench/fileio.sh [DISK_FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."

if ! command -v fio >/dev/null; then
    sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends fio \
        >/dev/null
fi
driver=build/bench/corvanta-fileio-bench
[ -x "$driver" ] || cmake --build build --target corvanta-fileio-bench

work=()
cleanup() { [ ${#work[@]} -eq 0 ] || rm -rf "${work[@]}"; }
trap cleanup EXIT

# tmpfs: /dev/shm when it is one; the disk: the given folder, else one beside the build.
shm=/dev/shm
[ "$(stat -f -c %T "$shm" 2>/dev/null)" = tmpfs ] || shm=
disk=${1:-$PWD/build}

measure() { # label parent
    local label=$1 folder
    folder=$(mktemp -d "$2/corvanta-fileio.XXXXXX")
    work+=("$folder")
    mkdir "$folder/ours" "$folder/fio"
    "$driver" "$folder/ours" >"$folder/report.txt" 2>/dev/null
    for rw in read write; do
        fio --name="$rw" --directory="$folder/fio" --filename="$rw.dat" --size=1048576 --bs=1048 \
            --rw="$rw" --ioengine=sync --invalidate=0 --fallocate=none --output-format=json \
            >"$folder/fio-$rw.json"
    done
    python3 - "$label ($(stat -f -c %T "$2"), $2)" "$folder" <<'PY'
import json, statistics, sys
label, folder = sys.argv[1], sys.argv[2]
lines = open(f"{folder}/report.txt").read().split("\n")
total = next(line.split()[1] for line in lines if line.startswith("TOTAL "))
ours = {}
for i, line in enumerate(lines):
    if " min=" in line:
        times = [float(t) for t in lines[i + 1].split(",") if t]
        ours[line.split()[0]] = [statistics.median(times) * 1e6, statistics.mean(times) * 1e6] \
            if times else [float("nan")] * 2
    if line == "Errors:":
        print(f"{label}: the benchmark reported errors:\n" + "\n".join(lines[i:i + 3]))
fio = {}
for rw in ("read", "write"):
    job = json.load(open(f"{folder}/fio-{rw}.json"))["jobs"][0][rw]
    fio[rw] = (job["clat_ns"]["percentile"]["50.000000"] / 1e3, job["clat_ns"]["mean"] / 1e3,
               job["total_ios"])
print(f"{label}: whole benchmark {total} s")
print("  median us: " + "  ".join(f"{name} {value[0]:.2g}" for name, value in ours.items()))
print(f"  {'1048 B ops on 1 MiB':<24}{'ours median':>12}{'fio median':>12}{'ratio':>7}"
      f"{'ours mean':>11}{'fio mean':>10}{'ratio':>7}")
for name, rw in (("SEQUENTIAL_READ", "read"), ("SEQUENTIAL_WRITE", "write")):
    median, mean = ours[name]
    fio_median, fio_mean, ios = fio[rw]
    print(f"  {rw + f' ({ios} fio ops)':<24}{median:>12.2f}{fio_median:>12.2f}"
          f"{median / fio_median:>6.2f}x{mean:>11.2f}{fio_mean:>10.2f}{mean / fio_mean:>6.2f}x")
PY
}

[ -n "$shm" ] && measure tmpfs "$shm"
measure disk "$disk"
echo "Times in microseconds per operation; ours carry the one significant digit the report prints."
