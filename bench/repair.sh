#!/usr/bin/env bash
# Times Repair Preferences on preferences files of 1, 4 and 100 MB (or the sizes in MB given),
# each holding a stored date and time every tenth line, as the page's button runs it: on a thread
# of its own behind the progress dialog. Prints the repair's time and the longest the GUI thread's
# event loop was held, both in milliseconds. Run it from a built tree: bench/repair.sh [SIZES]
set -euo pipefail
cd "$(dirname "$0")/.."
driver=build/bench/corvanta-repair-bench
[ -x "$driver" ] || cmake --build build --target corvanta-repair-bench
sizes=${*:-1 4 100}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen

printf '%8s %12s %12s  %s\n' MB "repair ms" "stall ms" report
for size in $sizes; do
    file=$work/Corvanta.ini
    python3 - "$file" "$size" <<'PY'
import sys
path, megabytes = sys.argv[1], int(sys.argv[2])
line = 0
with open(path, "wb") as out:
    out.write(b"[General]\n")
    while out.tell() < megabytes * 1000000:
        if line % 10 == 0:
            out.write(b"check%d=@DateTime(\x00\x00\x00\x10\x00\x00\x00\x00\x00\x00%%\x8a\xa0\x04)\n" % line)
        else:
            out.write(b"recent%d=/home/user/designs/plasmid%06d.dna\n" % (line, line))
        line += 1
PY
    read -r ms stall report < <("$driver" "$file" 2>/dev/null)
    printf '%8s %12s %12s  %s\n' "$size" "$ms" "$stall" "${report//$work\//}"
done
