// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

// A volume's capacity bar: a pill-shaped track with its free share filled in the
// accent colour from the left.
class VolumeBar : public QWidget {
    Q_OBJECT
public:
    explicit VolumeBar(QWidget* parent = nullptr);

    // The free share, 1.0 for an empty volume; outside 0...1 it is drawn clamped.
    qreal fraction() const { return fraction_; }
    void setFraction(qreal fraction);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    qreal fraction_ = 0;
};
