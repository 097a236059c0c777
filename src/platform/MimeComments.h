// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QHash>
#include <QString>

// The descriptions the desktop's MIME database gives a type, by language tag as the
// database writes them ("" for the untranslated one, "de", "pt_BR", "zh_CN", …).
// Read from the type's own file (mime/TYPE.xml in the data folders); empty when
// there is none.
QHash<QString, QString> mimeComments(const QString& mimeType);
