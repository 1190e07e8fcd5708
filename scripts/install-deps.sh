#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian packages Tarnline needs to build, test and run, only those missing.
# Usage: install-deps.sh [run]   ("run" adds what the run command needs on a machine without a display)
set -euo pipefail

# help2man writes the manual pages; dpkg-dev (dpkg-shlibdeps), lintian, desktop-file-utils,
# appstream and devscripts (hardening-check) build and check the Debian package.
packages=(build-essential cmake pkg-config qt6-base-dev qt6-serialport-dev libgtest-dev libgmock-dev
          libbenchmark-dev fonts-dejavu-core clang libclang-rt-14-dev help2man dpkg-dev lintian
          desktop-file-utils appstream devscripts)
packages+=(tshark)  # reads the bus captures back in the tests
# gensio reaches serial lines on other machines; ser2net and openssl serve one to its test.
packages+=(libgensio-dev ser2net openssl)
# The screen reader's test: an X server, a D-Bus session with the AT-SPI bus, and an AT-SPI client.
packages+=(xvfb dbus at-spi2-core python3-pyatspi gir1.2-atspi-2.0 python3-gi)
if [[ "${1:-}" == "run" ]]; then
  packages+=(xvfb xauth imagemagick)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

echo "Installing: ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# tshark asks whether non-root users may capture; nothing here needs that.
echo "wireshark-common wireshark-common/install-setuid boolean false" | $sudo debconf-set-selections
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
