#pragma once

#include <QString>

class Node;

// "  ·  ": two spaces, a middle dot, two spaces.
QString statusSeparator();

// The status line of an open folder: its path and "Calculating…" until its total and
// its listing are both known, then its path, the number of direct children and the
// total ("%d items  ·  Total %@").
QString statusLineForRoot(const Node& root);
