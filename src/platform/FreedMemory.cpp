// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FreedMemory.h"

#include <QThreadPool>
#include <malloc.h>

void giveBackFreedMemory() {
    QThreadPool::globalInstance()->start([] { malloc_trim(0); });
}
