#!/usr/bin/env bash
# Times --diff on two made-up reports of LINES lines a side (default 80,000): a Permissions page of
# paths as fields and a page of plain text lines, the later report with a few paths changed,
# added and gone, and every text line moved. Prints the time of each of RUNS runs (default 5).
# Run it from a built tree: bench/diff.sh [LINES]
set -euo pipefail
cd "$(dirname "$0")/.."
report=build/corvanta-support-report
[ -x "$report" ] || scripts/build.sh
lines=${1:-80000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

python3 - "$lines" "$work" <<'PY'
import json, sys
lines, work = int(sys.argv[1]), sys.argv[2]
half = lines // 2

def report(paths, texts):
    fields = [{"label": p, "value": s, "note": ""} for p, s in paths]
    return {"generated": "2024-03-20T15:12:07Z",
            "tool": {"name": "Corvanta Support", "version": "1.0.5"},
            "sections": [
                {"kind": 3, "name": "Permissions", "errors": [], "fields": fields,
                 "text": "".join(f" {p} {s}\n" for p, s in paths)},
                {"kind": 5, "name": "System", "errors": [], "fields": [],
                 "text": "".join(t + "\n" for t in texts)}]}

paths = [(f"/home/u/.local/share/Corvanta/folder{i // 100}/file{i}", "OK") for i in range(half)]
texts = [f"line {i} of the listing" for i in range(lines - half)]
later = [(p, "Not Writable" if i % 1000 == 0 else s) for i, (p, s) in enumerate(paths[10:])]
later += [(f"/home/u/.local/share/Corvanta/new{i}", "OK") for i in range(10)]
json.dump(report(paths, texts), open(f"{work}/earlier.json", "w"))
json.dump(report(later, texts[::-1]), open(f"{work}/later.json", "w"))
PY

export QT_QPA_PLATFORM=offscreen
echo "--diff of $lines lines a side:"
for run in $(seq "${RUNS:-5}"); do
    start=$(date +%s.%N)
    status=0
    "$report" --diff "$work/earlier.json" "$work/later.json" >"$work/differences" 2>"$work/errors" \
        || status=$?
    end=$(date +%s.%N)
    printf 'run %d: %.3f s, exit %d, %d lines of differences\n' "$run" \
        "$(echo "$end - $start" | bc)" "$status" "$(wc -l <"$work/differences")"
done
