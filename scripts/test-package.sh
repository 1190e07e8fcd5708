#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Checks the Debian package that `make package` built: its control fields and contents, the menu
# entry and the AppStream metadata, lintian, and the installed programs themselves, run from a
# throwaway root on the offscreen platform. Any problem ends it with status 1.
# Usage: scripts/test-package.sh BUILD_DIR
set -euo pipefail

build=${1:?usage: test-package.sh BUILD_DIR}
root_dir=$(cd "$(dirname "$0")/.." && pwd)
app_id=io.github.tarnline.Tarnline
status_line="Freq: 145500  Mode: FM  Filter: WIDE"  # the demo radio: 145.5 MHz, FM, filter 1

fail() {
  echo "test-package: FAILED: $*" >&2
  exit 1
}

for tool in dpkg-deb lintian desktop-file-validate appstreamcli hardening-check tshark; do
  command -v "$tool" >/dev/null || fail "$tool is missing (scripts/install-deps.sh installs it)"
done

version=$(sed -n 's/^project(Tarnline VERSION \([0-9.]*\).*/\1/p' "$root_dir/CMakeLists.txt")
[[ -n "$version" ]] || fail "no version in project() of CMakeLists.txt"
deb="$build/tarnline_${version}_$(dpkg --print-architecture).deb"
[[ -f "$deb" ]] || fail "$deb is missing (make package)"
echo "Checking $deb"

# Control fields.
field() { dpkg-deb --field "$deb" "$1"; }
expect_field() {
  [[ "$(field "$1")" == "$2" ]] || fail "$1 is '$(field "$1")', not '$2'"
}
expect_field Package tarnline
expect_field Version "$version"
expect_field Section hamradio
expect_field Architecture "$(dpkg --print-architecture)"
[[ "$(field Maintainer)" =~ ^[^@\<]+\ \<[^@\>]+@[^@\>]+\>$ ]] || fail "Maintainer '$(field Maintainer)'"
depends=", $(field Depends),"
for lib in libc6 libstdc++6 libqt6core6 libqt6widgets6 libqt6serialport6 libgensio4; do
  [[ "$depends" == *", $lib "* || "$depends" == *", $lib,"* ]] || fail "Depends lacks $lib: $depends"
done
[[ "$(field Description)" == *"CI-V"*$'\n'*"simradio"* ]] || fail "Description: $(field Description)"

# Contents. The CI-V dissector goes where Wireshark loads global Lua plugins.
dissector=usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/wireshark/plugins/civ.lua
contents=$(dpkg-deb --contents "$deb" | awk '{print $1, $6}')
for entry in "-rwxr-xr-x ./usr/bin/tarnline" "-rwxr-xr-x ./usr/bin/simradio" \
  "-rw-r--r-- ./usr/share/applications/$app_id.desktop" \
  "-rw-r--r-- ./usr/share/metainfo/$app_id.metainfo.xml" \
  "-rw-r--r-- ./usr/share/icons/hicolor/scalable/apps/$app_id.svg" \
  "-rw-r--r-- ./usr/share/man/man1/tarnline.1.gz" "-rw-r--r-- ./usr/share/man/man1/simradio.1.gz" \
  "-rw-r--r-- ./usr/share/doc/tarnline/copyright" "-rw-r--r-- ./usr/share/doc/tarnline/changelog.gz" \
  "-rw-r--r-- ./$dissector"; do
  grep -qxF -- "$entry" <<<"$contents" || fail "the package lacks '$entry'"
done
if grep -v '^d' <<<"$contents" | grep -v -e '^-rwxr-xr-x ./usr/bin/' -e '^-rw-r--r-- ./usr/share/' \
  -e "^-rw-r--r-- ./$dissector\$"; then
  fail "files above are not where or as they should be"
fi

# lintian: no error and no warning; the infos left are listed.
lintian_out=$(lintian --display-info "$deb" 2>&1 | grep -v '^running with root privileges') || true
echo "$lintian_out" | grep -E '^[EWI]:' || true
if grep -qE '^[EW]:' <<<"$lintian_out"; then fail "lintian reports errors or warnings"; fi
if grep -E '^I: .*hardening-' <<<"$lintian_out"; then fail "lintian finds a program built without hardening"; fi

# Install into a throwaway root and check what landed.
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
dpkg-deb --extract "$deb" "$tmp"
usr="$tmp/usr"
# desktop-file-validate prints hints too, which are advice; an error or a warning fails.
desktop_out=$(desktop-file-validate "$usr/share/applications/$app_id.desktop" 2>&1) ||
  fail "desktop-file-validate: $desktop_out"
if grep -E ': (error|warning): ' <<<"$desktop_out"; then fail "desktop-file-validate"; fi
appstreamcli validate --no-net "$usr/share/metainfo/$app_id.metainfo.xml" >"$tmp/appstream.log" ||
  { cat "$tmp/appstream.log"; fail "appstreamcli validate"; }
grep -q 'Exec=tarnline$' "$usr/share/applications/$app_id.desktop" || fail "Exec is not tarnline"
[[ "$(zcat "$usr/share/doc/tarnline/changelog.gz" | head -1)" == "tarnline ($version) "* ]] ||
  fail "the changelog's newest entry is not $version"
for program in tarnline simradio; do
  zcat "$usr/share/man/man1/$program.1.gz" | grep -qF -- '\-\-version' ||
    fail "the man page of $program lacks --version"
  if ldd "$usr/bin/$program" | grep 'not found'; then fail "$program misses a library"; fi
  # Control-flow marking is left out: Debian 12's own start files (crt1.o, crti.o) carry no CET
  # note, so no program linked there can have one, Debian's own included.
  hardening-check --nocfprotection "$usr/bin/$program" || fail "$program is not hardened"
  out=$(QT_QPA_PLATFORM=offscreen "$usr/bin/$program" --version)
  [[ "$out" == "$program $version" ]] || fail "$program --version says '$out'"
done

# The installed program on its demo radio, as a user would start it.
status=0
out=$(cd "$tmp" && QT_QPA_PLATFORM=offscreen timeout 20 "$usr/bin/tarnline" --demo \
  --status-after 1500 --quit-after 2000 --capture "$tmp/bus.pcapng" 2>"$tmp/tarnline.log") || status=$?
if ((status != 0)); then
  cat "$tmp/tarnline.log" >&2
  fail "tarnline --demo ended with status $status"
fi
[[ "$out" == "$status_line" ]] || fail "tarnline --demo printed '$out', not '$status_line'"
# Its capture, decoded by the installed dissector: the demo radio's frequency.
freq=$(tshark -r "$tmp/bus.pcapng" -X "lua_script:$tmp/$dissector" -Y civ.freq -T fields -e civ.freq \
  2>/dev/null | head -1)
[[ "$freq" == 145500000 ]] || fail "tshark with the installed civ.lua read '$freq', not 145500000"
echo "test-package: $deb is good"
