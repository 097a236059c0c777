// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

// The program's file-creation mask, read without changing it (umask() can only be read
// by setting it, which would race with other threads creating files).
mode_t processUmask();
