// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/PlainText.h"

#include <QLabel>

QLabel* makePlainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    return label;
}

QString plainToolTip(const QString& text) {
    if (text.isEmpty())
        return text;
    return QStringLiteral("<p style='white-space:pre'>") + text.toHtmlEscaped() +
           QStringLiteral("</p>");
}

QString plainWindowTitle(const QString& text) {
    // "[*][*]" is how a title says a literal "[*]".
    return QString(text).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}
