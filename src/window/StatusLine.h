// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

class Node;

// "  ·  ": two spaces, a middle dot, two spaces.
QString statusSeparator();

// The status line of an open folder: its path and "Calculating…" until its total and
// its listing are both known, then countedStatusLine.
QString statusLineForRoot(const Node& root);

// The line of a listed folder: its path, the number of its direct children and its
// total ("%d items  ·  Total %@"), the total reading "Calculating…" while unknown. A
// language switch rebuilds the line this way whether or not the total is in.
QString countedStatusLine(const Node& root);
