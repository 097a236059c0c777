// The empty face: a large drop area with an icon, a title and a Choose Folder button.
#include "app/AppController.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/TintedIcon.h"
#include "ui/UiFont.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

QWidget* AppController::makeEmptyState() {
    auto* container = new QWidget;

    auto* iconHolder = new QWidget;
    iconHolder->setFixedSize(100, 100);
    QLabel* icon = makePlainLabel({}, iconHolder);
    const qreal dpr = container->devicePixelRatioF();
    icon->setPixmap(tintedSvgPixmap(QStringLiteral(":/ui/icons/drop-tray.svg"), {64, 64},
                                    accentColor(), std::max<qreal>(dpr, 2.0)));
    icon->setGeometry(18, 18, 64, 64);

    emptyTitle = makePlainLabel(t(QStringLiteral("drop_here")));
    emptyTitle->setFont(uiFont(17, QFont::DemiBold));
    emptyTitle->setAlignment(Qt::AlignCenter);
    setTextColor(emptyTitle, secondaryTextColor());

    emptyBrowse = new QPushButton;
    accentize(emptyBrowse, t(QStringLiteral("choose_folder")));
    emptyBrowse->setMinimumHeight(30);
    connect(emptyBrowse, &QPushButton::clicked, this, &AppController::browseClicked);

    auto* stack = new QVBoxLayout(container);
    stack->setSpacing(0);
    stack->addStretch(1);
    stack->addWidget(iconHolder, 0, Qt::AlignHCenter);
    stack->addSpacing(8);
    stack->addWidget(emptyTitle, 0, Qt::AlignHCenter);
    stack->addSpacing(14);
    stack->addWidget(emptyBrowse, 0, Qt::AlignHCenter);
    stack->addStretch(1);
    // Centred 8 points above the middle.
    stack->addSpacing(16);
    return container;
}
