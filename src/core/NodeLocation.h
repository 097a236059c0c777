// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/Node.h"
#include "platform/ItemReach.h"

// Where the node's item was when its row was measured, from the top of its tree: what
// an action reaches it by again.
ItemLocation locationOf(const Node& node);
