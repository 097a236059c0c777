// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ResolvedPath.h"

#include <cstdlib>
#include <memory>

QByteArray resolvedPath(const QByteArray& path) {
    std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.constData(), nullptr),
                                                         &std::free);
    return resolved ? QByteArray(resolved.get()) : QByteArray();
}
