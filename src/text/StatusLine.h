#pragma once

#include <QString>

class Node;

// The status line of an open folder: its path, "  ·  ", then the number of its
// children and its size (which reads as "calculating" while unknown). Before the
// folder has been listed there is no count yet, so the size text stands alone.
QString statusLineForRoot(const Node& root);
