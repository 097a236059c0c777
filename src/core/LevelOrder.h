// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/SizeIndex.h"

#include <vector>

// The folder's entries largest first; equal sizes in the order they were listed.
std::vector<EntryId> largestFirst(const SizeIndex& index, EntryId folder);
