#pragma once

#include <QByteArray>
#include <QList>
#include <optional>

// Runs a program without a shell, arguments passed as separate strings, and returns
// everything it wrote to standard output once it has exited. Standard error goes to
// the null device so that however much the program complains it never blocks.
// Returns nothing when the program cannot be started.
std::optional<QByteArray> runForOutput(const QByteArray& program, const QList<QByteArray>& args);

// Ends every child that runForOutput is still waiting for (the program is quitting,
// or the work they do is no longer wanted); their callers then see what was written.
void terminateRunningChildren();
