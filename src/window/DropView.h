// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QWidget>
#include <functional>

class QMimeData;

// The main window's content: takes a drop of files and hands on the first one.
class DropView : public QWidget {
    Q_OBJECT
public:
    explicit DropView(QWidget* parent = nullptr);

    // The first local file among the dropped URLs, as path bytes; empty if none.
    static QByteArray firstLocalPath(const QMimeData& data);

Q_SIGNALS:
    // A drop: the first local file among the dropped URLs.
    void dropped(const QByteArray& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};
