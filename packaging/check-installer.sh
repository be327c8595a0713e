#!/usr/bin/env bash
# Installs the Windows installer silently into a fresh Wine prefix set to Windows 10, under Xvfb,
# and checks the installed programs as a Windows user meets them: the report in its three forms,
# the window and the four repairs of its Corvanta page, witnessed by Wine's reg.exe and the
# Recycle Bin; then uninstalls silently and checks that nothing is left. Prints the installer's
# size and the install, launch and uninstall times. Runs itself again inside "unshare -rn", so
# nothing it starts can reach a network.
#
#   packaging/check-installer.sh SOURCE_DIR INSTALLER
set -euo pipefail

if [ "${CORVANTA_OFFLINE:-}" != 1 ]; then
    CORVANTA_OFFLINE=1 exec unshare -rn "$0" "$@"
fi
source_dir=$(readlink -f "$1")
installer=$(readlink -f "$2")
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
echo "installer: $(stat -c %s "$installer") bytes"

echo "== install"
start=$(date +%s%N)
"$wine" "$installer" /S
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
