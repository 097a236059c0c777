#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-2.0-or-later
# Shared by run.sh and test.sh: installs the Debian packages Sizeloom needs (only the
# missing ones), then configures and builds into build/.
set -euo pipefail

PACKAGES=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6svg6 qt6-qpa-plugins
  libarchive-dev libmount-dev libblkid-dev libglib2.0-dev
  coreutils dbus dbus-x11 xvfb xauth x11-utils libx11-dev
  appstream desktop-file-utils unzip zip e2fsprogs dosfstools exfatprogs
  trash-cli xclip xdg-utils at-spi2-core squashfs-tools libfuse3-dev fuse3
  fonts-dejavu-core hicolor-icon-theme adwaita-icon-theme
)

missing=()
for pkg in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$pkg")
  fi
done

if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  SUDO=""
  if [[ $(id -u) -ne 0 ]]; then SUDO="sudo"; fi
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD_DIR="${BUILD_DIR:-$ROOT/build}"
cmake -S "$ROOT" -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$BUILD_DIR"
