// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <optional>

class StopFlag;

// Runs a program without a shell, arguments passed as separate strings, and returns
// everything it wrote to standard output once it has exited. Standard error goes to
// the null device so that however much the program complains it never blocks.
// Returns nothing when the program cannot be started, or when the work it is run for
// (stop) is no longer wanted: then it is not started at all.
std::optional<QByteArray> runForOutput(const QByteArray& program, const QList<QByteArray>& args,
                                       const StopFlag* stop = nullptr);

// Ends every child that runForOutput started for work that is no longer wanted; their
// callers then see what was written so far. StopFlag::stop calls it.
void endChildrenOfStoppedWork();
