// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// The entry `name` of the open folder dirFd is the top of a kernel file system whose
// entries occupy no blocks (proc, sysfs, cgroup, debugfs and their kin): walking it
// adds nothing to any total. Asked without following the entry and without setting off
// an automount.
bool isBlocklessFileSystem(int dirFd, const char* name);
