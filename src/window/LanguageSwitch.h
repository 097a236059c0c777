// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "text/Lang.h"

// The language the program starts in: the one chosen in Preferences when valid, else the
// person's first preferred language.
Lang startupLanguage();

// Speaks `lang` from now on, remembers it, and tells every window (QEvent::LanguageChange,
// posted) to read its texts anew.
void switchLanguage(Lang lang);
