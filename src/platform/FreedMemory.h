// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// The allocator keeps memory that was freed for later use; after a large piece of work
// (a walk, the sort of a large level) what it keeps is given back to the system, so that
// the process's size is what it holds. Runs on a worker: it takes a few milliseconds on
// a large heap.
void giveBackFreedMemory();
