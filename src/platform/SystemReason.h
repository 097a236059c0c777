// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

// The C library's text for an errno value in the language with this code ("de"), when
// the system has that language's locale; else as the C library gives it.
QString systemReason(int error, const QString& languageCode);
