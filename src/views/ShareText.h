// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

class Node;

// The share cell: the node's size over its folder's total as a bar and percentage.
// While the folder's own total is unknown or zero, the known sizes of all its
// children stand in for it; empty for the root, an unknown size or a zero total.
QString shareText(const Node& node);
