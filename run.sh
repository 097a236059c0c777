#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-2.0-or-later
# Installs what is missing, builds, and starts Sizeloom (optionally on FOLDER).
#   ./run.sh [FOLDER]
set -euo pipefail
ROOT="$(cd "$(dirname "$0")" && pwd)"
"$ROOT/tools/setup.sh"
exec "${BUILD_DIR:-$ROOT/build}/sizeloom" "$@"
