// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

// The About window: icon, name, version and credit. Closing it only hides it.
class AboutWindow : public QWidget {
    Q_OBJECT
public:
    explicit AboutWindow(QWidget* parent = nullptr);
};
