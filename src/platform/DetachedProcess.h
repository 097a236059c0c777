// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

// Starts a program for the user and lets it run on its own: no shell, each argument a
// separate string of raw bytes, standard input, output and error on the null device,
// in a session of its own so that it outlives this program. Returns once the program
// has been started, never waiting for it to finish. A program without a slash is
// looked up in PATH. False when it could not be started.
bool startDetached(const QByteArray& program, const QList<QByteArray>& args);

// The program's full path when PATH holds it (or when it is a path already), else empty.
QByteArray findProgram(const QByteArray& program);
