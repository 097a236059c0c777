// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>

struct StringRow {
    const char* key;
    std::array<const char*, 9> texts; // UTF-8, in Lang order
};

extern const std::array<StringRow, 73> kStringRows;
