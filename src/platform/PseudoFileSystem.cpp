// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/PseudoFileSystem.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

bool isBlocklessType(unsigned long type) {
    switch (type) {
    case PROC_SUPER_MAGIC:
    case SYSFS_MAGIC:
    case CGROUP_SUPER_MAGIC:
    case CGROUP2_SUPER_MAGIC:
    case DEBUGFS_MAGIC:
    case TRACEFS_MAGIC:
    case SECURITYFS_MAGIC:
    case PSTOREFS_MAGIC:
    case BPF_FS_MAGIC:
    case DEVPTS_SUPER_MAGIC:
    case BINFMTFS_MAGIC:
    case AUTOFS_SUPER_MAGIC:
    case SELINUX_MAGIC:
    case SMACK_MAGIC:
    case NSFS_MAGIC:
    case 0x19800202: // mqueue
    case 0x62656570: // configfs
    case 0x65735543: // fusectl
    case 0x67596969: // rpc_pipefs
        return true;
    default:
        return false;
    }
}

} // namespace

bool isBlocklessFileSystem(int dirFd, const char* name) {
    // O_PATH without O_DIRECTORY neither follows nor mounts an autofs trigger.
    const int fd = openat(dirFd, name, O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct statfs fs {};
    const bool known = fstatfs(fd, &fs) == 0;
    close(fd);
    return known && isBlocklessType((unsigned long)(fs.f_type));
}
