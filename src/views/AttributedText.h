// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QString>

// A stretch of text in one colour and weight.
struct TextRun {
    QString text;
    QColor color;
    QFont::Weight weight = QFont::Normal;

    bool operator==(const TextRun&) const = default;
};

// Text made of runs, shown by a rich-text label.
using AttributedText = QList<TextRun>;

// The runs as rich text for a label, every space kept as it is.
QString richText(const AttributedText& runs);
