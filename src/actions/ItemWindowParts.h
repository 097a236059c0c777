// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QIcon>
#include <QString>

class QObject;
class QWidget;

// Pieces shared by the preview and properties windows.

// The desktop's icon for a MIME type, or a generic file or folder icon.
QIcon iconForMimeType(const QString& mimeType);

// Prepares a new window for an item (a dialog without a parent, so that a screen reader
// announces it as a window of its own): titled with the item's name, deleted when
// closed or with owner, closed by Esc.
void setUpItemWindow(QWidget* window, const QString& name, QObject* owner);
