// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

class QWidget;

// The modal alert of a failed file operation: the item's name, and the system's reason
// for errno `error` in the interface language where the system has it.
void showErrorAlert(QWidget* parent, const QString& title, const QString& itemName, int error);
