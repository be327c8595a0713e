#!/usr/bin/env bash
# Installs the Windows installer silently into a fresh Wine prefix set to Windows 10, under Xvfb,
# and checks the installed programs as a Windows user meets them: the report in its three forms,
# the window and the four repairs of its Corvanta page, witnessed by Wine's reg.exe and the
# Recycle Bin; then uninstalls silently and checks that nothing is left. Prints the installer's
# size and the install, launch and uninstall times. Runs itself again inside "unshare -rn", so
# nothing it starts can reach a network.
#
#   packaging/check-installer.sh BUILD_DIR [CPACK]
set -euo pipefail

if [ "${CORVANTA_OFFLINE:-}" != 1 ]; then
    CORVANTA_OFFLINE=1 exec unshare -rn "$0" "$@"
fi
build_dir=$(readlink -f "$1")
cpack=${2:-cpack}
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver64
work=$(mktemp -d)
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
export HOME=$work/home XDG_DATA_HOME=$work/home/.local/share LANG=C.UTF-8
mkdir -p "$HOME"
cleanup() {
    "$wineserver" -k 2>/dev/null || true
    [ -z "${server:-}" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

fail() {
    echo "FAIL: $*" >&2
    exit 1
}
# A Windows program that hangs (say on a message box nobody sees) fails its check instead.
run() { timeout 180 "$wine" "$@"; }
milliseconds() { echo $((($(date +%s%N) - $1) / 1000000)); }
# Wine's reg.exe answers in CRLF lines.
reg() { "$wine" reg "$@" 2>/dev/null | tr -d '\r'; }

display=:$((RANDOM % 100 + 300))
Xvfb "$display" -nolisten tcp -noreset -screen 0 1920x1080x24 >/dev/null 2>&1 &
server=$!
export DISPLAY=$display
until xdotool getdisplaygeometry >/dev/null 2>&1; do sleep 0.05; done

echo "== prefix"
"$wine" wineboot -i >/dev/null 2>&1
"$wine" winecfg -v win10 >/dev/null 2>&1
"$wineserver" -w
[ "$(reg query 'HKLM\Software\Microsoft\Windows NT\CurrentVersion' /v CurrentBuildNumber |
    awk '/CurrentBuildNumber/ {print $3}')" -ge 10000 ] || fail "the prefix is not Windows 10"

drive=$WINEPREFIX/drive_c
folder="$drive/Program Files/Corvanta Support"
menu="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Corvanta Support"
uninstall_key='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Corvanta Support'

echo "== installer"
"$cpack" -G NSIS -B "$work/out" --config "$build_dir/CPackConfig.cmake" >"$work/cpack.log" 2>&1 ||
    fail "cpack did not make the installer: $(tail -n 20 "$work/cpack.log")"
installer=$(ls "$work"/out/CorvantaSupport-*-win64.exe)
echo "installer: $(stat -c %s "$installer") bytes"

echo "== install"
start=$(date +%s%N)
run "$installer" /S
"$wineserver" -w
echo "install: $(milliseconds "$start") ms"
for file in corvanta-support.exe corvanta-support-report.exe Qt6Core.dll libstdc++-6.dll \
    plugins/platforms/qwindows.dll plugins/styles/qwindowsvistastyle.dll \
    plugins/tls/qschannelbackend.dll translations/qtbase_de.qm report.schema.json Uninstall.exe; do
    [ -f "$folder/$file" ] || fail "not installed: $file"
done
[ -f "$menu/Corvanta Support.lnk" ] || fail "no Start-menu entry: $(ls -R "$drive/ProgramData/Microsoft/Windows/Start Menu/Programs")"
entry=$(reg query "$uninstall_key")
for value in "DisplayName    REG_SZ    Corvanta Support" "DisplayVersion    REG_SZ    1.0.5" \
    "Publisher    REG_SZ    Kelvanmoor" \
    'DisplayIcon    REG_SZ    C:\Program Files\Corvanta Support\corvanta-support.exe' \
    'InstallLocation    REG_SZ    C:\Program Files\Corvanta Support'; do
    grep -qF "    $value" <<<"$entry" || fail "the Uninstall entry lacks \"$value\": $entry"
done

echo "== product"
# A Corvanta user's files: the data folder, its identifier, preferences with a broken date, and
# the design type's association.
roaming="$drive/users/$(id -un)/AppData/Roaming"
data="$roaming/Corvanta"
preferences="$roaming/Kelvanmoor/Corvanta.ini"
mkdir -p "$data/temp" "$(dirname "$preferences")"
echo 6f1c2d3e-0000-4000-8000-0123456789ab >"$data/userUUID.txt"
printf '[General]\nlastCheck=@DateTime(\0\0\0\x10\0\0\0\0\0\0%%\x8a\xa0\x4)\nname=Ada\n' >"$preferences"
reg add 'HKCU\Software\Classes\.cvd' /ve /d Corvanta.Design /f >/dev/null
reg add 'HKCU\Software\Classes\Corvanta.Design' /ve /d "Corvanta Design" /f >/dev/null

echo "== window"
start=$(date +%s%N)
run 'C:\Program Files\Corvanta Support\corvanta-support.exe' &
window=$!
main=
until [ -n "$main" ]; do
    for id in $(xdotool search --onlyvisible --name '^Corvanta Support$' 2>/dev/null); do
        xdotool getwindowgeometry "$id" | grep -q 'Geometry: 960x540' && main=$id
    done
    kill -0 "$window" 2>/dev/null || fail "the window program ended"
    sleep 0.05
done
echo "launch to main window: $(milliseconds "$start") ms"
eval "$(xdotool getwindowgeometry --shell "$main")"
# Centred across; down, Wine puts the client area below the title bar it reserves, which it
# draws only under a window manager.
[ "$X" = 480 ] && [ "$Y" -ge 270 ] && [ "$Y" -le 300 ] || fail "main window at $X,$Y"
# Places within the window, as Windows' default font lays it out.
click() { xdotool mousemove --window "$main" "$1" "$2" click 1; sleep 0.5; }
copy_report() {
    click 58 6 && xdotool key Down Return && sleep 1
    xclip -o -selection clipboard | tr -d '\r'
}
copied=$(copy_report)
sections=$(grep -A1 '^=\{50\}$' <<<"$copied" | grep -v '^=\|^--' | sort | tr '\n' ' ')
[ "$sections" = "Corvanta Display Fonts Permissions System " ] || fail "the window's pages: $sections"
grep -q "^Application Data: *C:/users/$(id -un)/AppData/Roaming/Corvanta *$" <<<"$copied" ||
    fail "the Corvanta page: $(grep -A3 '^Application Data' <<<"$copied")"

# The Corvanta page's four buttons, each witnessed outside the program.
waits() {
    for _ in $(seq 100); do
        eval "$1" && return 0
        sleep 0.2
    done
    fail "$2"
}
# Wine's Recycle Bin is the freedesktop trash; it records the path as Wine reaches drive C.
trashed() { grep -q "^Path=/.*${1#"$drive"}$" "$XDG_DATA_HOME"/Trash/info/*.trashinfo 2>/dev/null; }
# The window's pages: those with errors first, each group in the report's order.
pages=$(awk '/^=+$/ { getline; names[++n] = $0 } /^Errors:$/ { failing[names[n]] = 1 }
    END { for (i = 1; i <= n; i++) if (failing[names[i]]) print names[i]
          for (i = 1; i <= n; i++) if (!failing[names[i]]) print names[i] }' <<<"$copied")
corvanta=$(grep -nx Corvanta <<<"$pages" | cut -d: -f1)
# From the first page, Ctrl+Tab steps to the Corvanta page.
click 20 29
for _ in $(seq 2 "$corvanta"); do xdotool key ctrl+Tab; done
sleep 0.5
click 80 500
# The extension keeps its key; only the product's default value goes.
waits '! reg query "HKCU\Software\Classes\.cvd" /ve | grep -q Corvanta' "the association is left"
click 585 500
waits '[ "$(cat "$preferences")" = "$(printf "[General]\nlastCheck=@DateTime()\nname=Ada")" ]' \
    "the preferences were not repaired: $(cat -v "$preferences")"
# The repair says what it changed in a box of its own.
sleep 1 && xdotool key Return && sleep 0.5
click 713 500
waits '[ ! -e "$preferences" ] && trashed "$preferences"' "the preferences are not in the Recycle Bin"
click 866 500
waits '[ ! -e "$data" ] && trashed "$data"' "the data folder is not in the Recycle Bin"
click 15 6 && xdotool key Up Return
waits '! xdotool search --onlyvisible --name "^Corvanta Support$" >/dev/null' \
    "the window did not close from its File menu"

echo "== report"
# Checked in a subshell of its own, so that the uninstall is checked whatever it finds.
(
program='C:\Program Files\Corvanta Support\corvanta-support-report.exe'
# Installed programs are read from the 32-bit list: the product's entry is a version; entries of
# this tool, by its name or by its program, are not.
list='HKLM\Software\WOW6432Node\Microsoft\Windows\CurrentVersion\Uninstall'
for entry in 'Corvanta|5.2.1|C:\Program Files (x86)\Corvanta|C:\Program Files (x86)\Corvanta\Corvanta.exe' \
    'Corvanta Support|1.0.4|C:\Program Files (x86)\Corvanta Support|C:\Program Files (x86)\Corvanta Support\old.exe' \
    "Corvanta Helper|1.0.3|C:\\Program Files\\Corvanta Support|\"${program/-report/}\",0"; do
    IFS='|' read -r name version location icon <<<"$entry"
    for value in "DisplayName|$name" "DisplayVersion|$version" "InstallLocation|$location" \
        "DisplayIcon|$icon"; do
        reg add "$list\\$name" /v "${value%%|*}" /d "${value#*|}" /f >/dev/null
    done
done
run "$program" >"$work/report.txt" 2>"$work/report.log" &
plain=$!
run "$program" --redact --format json >"$work/report.json" 2>"$work/redacted.log" ||
    fail "the redacted JSON report ended with $? (124: still running after 180 s)"
wait "$plain" || fail "the report ended with $? (124: still running after 180 s)"
sections=$(tr -d '\r' <"$work/report.txt" | grep -A1 '^=\{50\}$' | grep -v '^=\|^--' | sort | tr '\n' ' ')
[ "$sections" = "Corvanta Display Fonts Permissions System " ] || fail "report sections: $sections"
versions=$(tr -d '\r' <"$work/report.txt" | sed -n '/^Versions:/,/^$/p')
[ "$(grep -c ' - ' <<<"$versions")" = 1 ] && grep -qF 'C:\Program Files (x86)\Corvanta - 5.2.1' <<<"$versions" ||
    fail "the installed versions: $versions"
python3 -c 'import json, sys, jsonschema
jsonschema.validate(json.load(open(sys.argv[1])), json.load(open(sys.argv[2])))' \
    "$work/report.json" "$folder/report.schema.json" || fail "the JSON report does not fit its schema"
for private in "$(id -un)" "$(hostname)" 6f1c2d3e-0000-4000-8000-0123456789ab; do
    ! grep -qwF "$private" "$work/report.json" || fail "the redacted report names $private"
done
grep -q '"user-1"' "$work/report.json" || fail "the redacted report has no user placeholder"
) || failed=report

echo "== uninstall"
start=$(date +%s%N)
run 'C:\Program Files\Corvanta Support\Uninstall.exe' /S
# The uninstaller runs on from a copy of itself in the temporary folder.
"$wineserver" -w
echo "uninstall: $(milliseconds "$start") ms"
[ ! -e "$folder" ] || fail "left behind: $(find "$folder")"
[ ! -e "$menu" ] || fail "the Start-menu entry is left: $(find "$menu")"
! reg query "$uninstall_key" >/dev/null || fail "the Uninstall key is left"
! reg query 'HKLM\Software\Kelvanmoor\Corvanta Support' >/dev/null || fail "the install key is left"
[ -z "${failed:-}" ] || fail "the $failed checks failed"
echo "installed program under Wine: all checks passed"
