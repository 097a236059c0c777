#!/bin/sh
# SPDX-License-Identifier: GPL-2.0-or-later
# Runs a test in a mount namespace of its own where the system allows one (as root), so
# that what it mounts is seen by nothing else and goes with it. Elsewhere the test runs
# as it is and skips what needs that.
if unshare --mount --propagation private true 2>/dev/null; then
    exec unshare --mount --propagation private -- "$@"
fi
exec "$@"
