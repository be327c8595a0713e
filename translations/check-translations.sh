#!/usr/bin/env bash
# Fails when a translation is unfinished, empty or obsolete, or when the sources hold texts a .ts
# file lacks or no longer needs: lupdate runs again, into a copy, and the copy must not change.
#
#   translations/check-translations.sh LUPDATE SOURCE_LIST "TS_FILE;..." [LUPDATE_OPTION...]
set -euo pipefail

lupdate=$1
sources=$2
IFS=';' read -r -a ts_files <<<"$3"
shift 3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
refresh="cmake --build build --target update_translations"
status=0
for ts in "${ts_files[@]}"; do
    copy="$work/$(basename "$ts")"
    cp "$ts" "$copy"
    "$lupdate" -silent "$@" "@$sources" -ts "$copy"
    if ! diff -u "$ts" "$copy"; then
        echo "FAIL: $ts does not match the sources; refresh it with: $refresh"
        status=1
    fi
    if grep -nE 'type="(unfinished|obsolete|vanished)"|<translation></translation>|<translation/>' "$ts"; then
        echo "FAIL: $ts has unfinished, empty or obsolete entries (above)"
        status=1
    fi
    echo "$(basename "$ts"): $(grep -c '<message' "$ts") texts"
done
exit $status
