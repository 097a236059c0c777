// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/SizeMeasure.h"

#include "core/DuOutput.h"
#include "platform/ChildProcess.h"

#include <sys/stat.h>

qint64 fileAllocatedSize(const QByteArray& path) {
    struct stat st {};
    if (lstat(path.constData(), &st) != 0)
        return 0;
    // st_blocks counts 512-byte units whatever the file system's block size.
    const qint64 allocated = qint64(st.st_blocks) * 512;
    if (allocated >= 0)
        return allocated;
    return st.st_size > 0 ? qint64(st.st_size) : 0;
}

qint64 folderDiskUsage(const QByteArray& path, const StopFlag* stop) {
    // "--": a path is never taken for an option, whatever its first character.
    const auto output =
        runForOutput("/usr/bin/du", {"-sk", "--dereference-args", "--", path}, stop);
    if (!output)
        return 0;
    return std::max<qint64>(0, duSizeFromOutput(*output, path));
}
