// The About window: icon, name, version and credit; made once, never updated.
#include "app/AppController.h"
#include "ui/AppIcon.h"
#include "window/AppVersion.h"
#include "ui/AuxWindow.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"

#include <QLabel>
#include <QMainWindow>
#include <QVBoxLayout>

namespace {

QLabel* centredLabel(const QString& text, const QFont& font, QWidget* parent) {
    QLabel* label = makePlainLabel(text, parent);
    label->setAlignment(Qt::AlignHCenter);
    label->setFont(font);
    return label;
}

QWidget* buildAboutWindow(QObject* owner) {
    QWidget* about = makeAuxWindow(owner);
    about->setWindowTitle(QString());

    QLabel* icon = makePlainLabel({}, about);
    icon->setFixedSize(88, 88);
    icon->setPixmap(appIconPixmap(88, about->devicePixelRatioF()));

    QLabel* name = centredLabel(QStringLiteral("Sizeloom"), uiFont(16, QFont::Bold), about);

    QLabel* version = centredLabel(QStringLiteral("Version ") + appVersion(), uiFont(11), about);
    setTextColor(version, secondaryTextColor());

    QLabel* credit =
        centredLabel(QStringLiteral("Made by the Sizeloom developers"), uiFont(10), about);
    setTextColor(credit, tertiaryTextColor());

    auto* stack = new QVBoxLayout(about);
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
    return about;
}

} // namespace

void AppController::showAbout() {
    if (!aboutWindow)
        aboutWindow = buildAboutWindow(this);
    presentCentered(aboutWindow, window ? window->screen() : nullptr);
}
