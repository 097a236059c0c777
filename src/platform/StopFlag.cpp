// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/StopFlag.h"

#include "platform/ChildProcess.h"

void StopFlag::stop() {
    stopped.store(true, std::memory_order_release);
    endChildrenOfStoppedWork();
}
