// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/AboutWindow.h"

#include "ui/AppIcon.h"
#include "ui/AuxWindow.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"
#include "window/AppVersion.h"

#include <QLabel>
#include <QVBoxLayout>

namespace {

QLabel* centredLabel(const QString& text, const QFont& font, QWidget* parent) {
    QLabel* label = makePlainLabel(text, parent);
    label->setAlignment(Qt::AlignHCenter);
    label->setFont(font);
    return label;
}

} // namespace

AboutWindow::AboutWindow(QWidget* parent) : QWidget(parent, kAuxWindowFlags) {
    setWindowIcon(appIcon());
    QLabel* icon = makePlainLabel({}, this);
    icon->setFixedSize(88, 88);
    icon->setPixmap(appIconPixmap(88, devicePixelRatioF()));
    QLabel* name = centredLabel(QStringLiteral("Sizeloom"), uiFont(16, QFont::Bold), this);
    QLabel* version = centredLabel(QStringLiteral("Version ") + appVersion(), uiFont(11), this);
    setTextColor(version, secondaryTextColor());
    QLabel* credit =
        centredLabel(QStringLiteral("Made by the Sizeloom developers"), uiFont(10), this);
    setTextColor(credit, tertiaryTextColor());

    auto* stack = new QVBoxLayout(this);
    stack->setSizeConstraint(QLayout::SetFixedSize);
    stack->setContentsMargins(40, 28, 40, 28);
    stack->setSpacing(0);
    stack->addWidget(icon, 0, Qt::AlignHCenter);
    stack->addSpacing(12);
    stack->addWidget(name, 0, Qt::AlignHCenter);
    stack->addSpacing(6);
    stack->addWidget(version, 0, Qt::AlignHCenter);
    stack->addSpacing(2);
    stack->addWidget(credit, 0, Qt::AlignHCenter);
}
