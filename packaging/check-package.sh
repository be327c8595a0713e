#!/usr/bin/env bash
# Checks what packagers and users get: the freedesktop files validate, the Debian package builds
# with every file at its place and nothing lintian objects to, and the report program runs from
# the unpacked package.
#
#   packaging/check-package.sh SOURCE_DIR BUILD_DIR VERSION [CPACK]
set -euo pipefail

source_dir=$1
build_dir=$2
version=$3
cpack=${4:-cpack}

app_id=com.kelvanmoor.CorvantaSupport
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAIL: $*" >&2
    exit 1
}

echo "== desktop entry and metainfo"
desktop-file-validate "$source_dir/packaging/$app_id.desktop"
appstreamcli validate --no-net --strict "$source_dir/packaging/$app_id.metainfo.xml"

echo "== package"
"$cpack" -G DEB -B "$work/out" --config "$build_dir/CPackConfig.cmake" >"$work/cpack.log" 2>&1 \
    || { cat "$work/cpack.log"; fail "cpack did not make the package"; }
package="$work/out/corvanta-support_${version}_$(dpkg --print-architecture).deb"
[ -f "$package" ] || fail "no $(basename "$package"); made: $(ls "$work/out")"

dpkg-deb -c "$package" | awk '{ print $6 }' | sed 's|^\./|/|' >"$work/contents"
for path in \
    /usr/bin/corvanta-support \
    /usr/bin/corvanta-support-report \
    "/usr/share/applications/$app_id.desktop" \
    "/usr/share/icons/hicolor/scalable/apps/$app_id.svg" \
    "/usr/share/icons/hicolor/48x48/apps/$app_id.png" \
    "/usr/share/metainfo/$app_id.metainfo.xml" \
    /usr/share/man/man1/corvanta-support.1.gz \
    /usr/share/man/man1/corvanta-support-report.1.gz \
    /usr/share/corvanta-support/report.schema.json \
    /usr/share/doc/corvanta-support/copyright \
    /usr/share/doc/corvanta-support/changelog.gz; do
    grep -qxF "$path" "$work/contents" || fail "the package lacks $path"
done
if grep -v '^/usr/' "$work/contents" | grep -qvx '/'; then
    fail "files outside /usr: $(grep -v '^/usr/' "$work/contents" | tr '\n' ' ')"
fi

[ "$(dpkg-deb -f "$package" Version)" = "$version" ] || fail "wrong version"
for field in Maintainer Section Description; do
    [ -n "$(dpkg-deb -f "$package" "$field")" ] || fail "no $field"
done
# Computed by dpkg-shlibdeps from the binaries, so Qt's widget library must be among them.
dpkg-deb -f "$package" Depends | grep -q 'libqt6widgets6 (>=' \
    || fail "dependencies not computed: $(dpkg-deb -f "$package" Depends)"

echo "== lintian"
lintian --fail-on error,warning "$package"

echo "== unpacked"
root="$work/root"
dpkg-deb -x "$package" "$root"
appstreamcli validate-tree --no-net --strict "$root"
for page in "$root"/usr/share/man/man1/*.1.gz; do
    gzip -t "$page" || fail "$page is not gzip"
done

answer=$(LANG=C "$root/usr/bin/corvanta-support-report" --version)
[ "$answer" = "corvanta-support-report $version" ] || fail "--version says \"$answer\""

# The packaged report program, in a home of its own; it may not reach the internet (the test's
# proxy settings see to that), so its external address stays empty.
mkdir -p "$work/home"
HOME="$work/home" XDG_CONFIG_HOME= XDG_DATA_HOME= XDG_CACHE_HOME= \
    "$root/usr/bin/corvanta-support-report" >"$work/report.txt" \
    || fail "the packaged report program failed"
head -n 1 "$work/report.txt" | grep -q '^Generated: ' || fail "no report: $(head -c 300 "$work/report.txt")"
for name in Display Fonts System; do
    grep -qx "$name" "$work/report.txt" || fail "the report has no $name section"
done
echo "packaged report: $(wc -l <"$work/report.txt") lines"
