#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-2.0-or-later
# Installs what is missing, builds, and runs the whole suite through ctest.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")" && pwd)"
"$ROOT/tools/setup.sh"
export QT_QPA_PLATFORM=offscreen
cd "${BUILD_DIR:-$ROOT/build}"
ctest --output-on-failure "$@"
