// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "views/AttributedText.h"

// A volume's free and total capacity in decimal gigabytes: the free part in the
// accent colour and semibold, the total in the secondary text colour.
AttributedText capAttr(qint64 freeBytes, qint64 totalBytes);
