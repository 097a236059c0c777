// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/DeleteWith.h"

#include <QObject>

void deleteWith(QObject* owner, QObject* object) {
    QObject::connect(owner, &QObject::destroyed, object, [object] { delete object; });
}
