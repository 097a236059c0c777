// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

// The path with every link, "." and ".." resolved; empty when it does not lead anywhere.
QByteArray resolvedPath(const QByteArray& path);
