// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/MountRules.h"

#include <QByteArrayList>
#include <libmount.h>

namespace {

bool isUnder(const QByteArray& path, const QByteArray& folder) {
    return path == folder || path.startsWith(folder + '/');
}

bool isFuse(const QByteArray& fsType) {
    return fsType == "fuse" || fsType.startsWith("fuse.");
}

} // namespace

bool isAlwaysListed(const QByteArray& mountPoint) {
    return mountPoint == "/" || mountPoint == "/home";
}

bool isSystemMountPoint(const QByteArray& mountPoint) {
    static const QByteArrayList systemFolders{"/boot", "/proc", "/sys",    "/dev",
                                              "/run",  "/snap", "/var/lib"};
    if (isUnder(mountPoint, "/run/media") && mountPoint != "/run/media")
        return false;
    for (const QByteArray& folder : systemFolders)
        if (isUnder(mountPoint, folder))
            return true;
    return false;
}

bool isBrowsableMount(libmnt_fs* fs) {
    const QByteArray mountPoint = mnt_fs_get_target(fs);
    if (isAlwaysListed(mountPoint))
        return true;
    // A root other than "/" mounts one folder of a file system (a bind mount, a
    // subvolume): part of a volume, not a volume.
    if (QByteArray(mnt_fs_get_root(fs)) != "/" || isSystemMountPoint(mountPoint))
        return false;
    const QByteArray fsType = mnt_fs_get_fstype(fs);
    // libmount counts FUSE mounts that do not name a source as pseudo (encfs and the
    // like), yet they hold a person's files; the FUSE helpers of the desktop itself
    // live under /run and /var/lib, left out above.
    if (isFuse(fsType))
        return true;
    // Snap and live-system images are block-backed but only ever read.
    if (mnt_fs_is_pseudofs(fs) || fsType == "squashfs")
        return false;
    return QByteArray(mnt_fs_get_source(fs)).startsWith("/dev/");
}

bool isLocalMount(libmnt_fs* fs) {
    // Network file systems that libmount does not know as such.
    static const QByteArrayList networkTypes{
        "ceph",        "fuse.ceph",     "fuse.glusterfs", "davfs",  "fuse.davfs",  "fuse.s3fs",
        "fuse.rclone", "fuse.smbnetfs", "coda",           "lustre", "fuse.gcsfuse"};
    return !mnt_fs_is_netfs(fs) && !networkTypes.contains(QByteArray(mnt_fs_get_fstype(fs)));
}

bool isHiddenMount(libmnt_fs* fs) {
    return mnt_fs_match_options(fs, "x-gvfs-hide") == 1;
}
