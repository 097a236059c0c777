// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/ShareServices.h"

#include <QByteArray>
#include <QList>

class QMenu;
class QObject;
class QWidget;

// The share picker: a small menu with one entry per service, each handing the item to
// its service; with no service, one disabled entry saying so. Deleted when closed.
QMenu* makeSharePicker(const QList<ShareService>& services, const QByteArray& path,
                       QObject* context, QWidget* parent);
