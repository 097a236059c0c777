// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/MountTable.h"

#include <QList>
#include <QWidget>

class QLabel;
class QPushButton;
class QScrollArea;
class VolumeReader;

// The panel at the bottom of the main window: the mounted local volumes, each with its
// free and total capacity and a capacity bar, listed again on every mount event (more
// than a few scroll within the panel), and a button to the desktop's settings for what applications
// may reach.
class VolumesPanel : public QWidget {
    Q_OBJECT
public:
    explicit VolumesPanel(QWidget* parent = nullptr);

    // Lists the volumes again; the rows follow once the volumes have answered.
    void refresh();
    // The rows' own widget, holding one child per listed volume.
    QWidget* rows() const { return rowList; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void showRows(const QList<VolumeInfo>& volumes);
    void openPermissionSettings();
    void retranslate();
    // The panel is as tall as its rows, up to kRowsShownAtMost; more scroll.
    void fitRows();
    static constexpr int kRowsShownAtMost = 4;

    QLabel* header;
    QPushButton* grant;
    QWidget* rowList;
    QScrollArea* scroller;
    VolumeReader* reader;
};
