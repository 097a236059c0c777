// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/PreviewWindow.h"

#include "actions/ItemWindowParts.h"
#include "platform/BackgroundJob.h"
#include "text/LangLocale.h"
#include "text/SizeText.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QVBoxLayout>

PreviewWindow::PreviewWindow(const ItemRef& node, QObject* owner) : item(node) {
    setUpItemWindow(this, node.name, owner);
    // Space closes as it opened: the key toggles the preview.
    auto* space = new QShortcut(QKeySequence(Qt::Key_Space), this);
    connect(space, &QShortcut::activated, this, &QWidget::close);
    resize(kImageFit + QSize(24, 24));
    body = new QVBoxLayout(this);
    body->setContentsMargins(12, 12, 12, 12);
    content.mimeType = node.isFolder ? QStringLiteral("inode/directory")
                                     : QStringLiteral("application/octet-stream");
    shown = makeSummary();
    body->addWidget(shown);

    const QSize fit = kImageFit * devicePixelRatioF();
    runInBackground<PreviewContent>(
        this, [path = node.path, fit] { return loadPreview(path, fit); },
        [this](PreviewContent read) { showContent(read); });
}

QWidget* PreviewWindow::makeSummary() {
    auto* summary = new QWidget(this);
    auto* column = new QVBoxLayout(summary);
    column->setSpacing(6);
    column->addStretch(1);
    QLabel* icon = makePlainLabel(QString(), summary);
    icon->setPixmap(iconForMimeType(content.mimeType).pixmap(QSize(128, 128)));
    icon->setAccessibleName(item.name);
    column->addWidget(icon, 0, Qt::AlignHCenter);
    QLabel* name = makePlainLabel(item.name, summary);
    name->setFont(uiFont(15, QFont::DemiBold));
    name->setWordWrap(true);
    name->setAlignment(Qt::AlignHCenter);
    column->addWidget(name);
    typeLabel = makePlainLabel(QString(), summary);
    sizeLabel = makePlainLabel(QString(), summary);
    for (QLabel* line : {typeLabel, sizeLabel}) {
        line->setAlignment(Qt::AlignHCenter);
        setTextColor(line, secondaryTextColor());
        column->addWidget(line);
    }
    column->addStretch(1);
    retranslate();
    return summary;
}

void PreviewWindow::showContent(const PreviewContent& loaded) {
    content = loaded;
    QWidget* next = nullptr;
    switch (content.kind) {
    case PreviewContent::Kind::Image: {
        QPixmap pixmap = QPixmap::fromImage(content.image);
        pixmap.setDevicePixelRatio(devicePixelRatioF());
        QLabel* image = makePlainLabel(QString(), this);
        image->setPixmap(pixmap);
        image->setAlignment(Qt::AlignCenter);
        image->setAccessibleName(item.name);
        next = image;
        break;
    }
    case PreviewContent::Kind::Text: {
        auto* text = new QPlainTextEdit(this);
        text->setReadOnly(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        text->setFont(monoFont(12));
        text->setPlainText(content.text);
        text->setAccessibleName(item.name);
        next = text;
        break;
    }
    case PreviewContent::Kind::Summary:
        next = makeSummary();
        break;
    }
    if (next != shown) {
        if (content.kind != PreviewContent::Kind::Summary) {
            typeLabel = nullptr;
            sizeLabel = nullptr;
        }
        // The layout hands back the item that held the old widget: both are ours to delete.
        delete body->replaceWidget(shown, next);
        delete shown;
        shown = next;
        shown->setFocus();
    }
    retranslate();
}

void PreviewWindow::retranslate() {
    if (content.kind == PreviewContent::Kind::Image && shown)
        shown->setAccessibleDescription(describeIn(content.typeNames, Loc::current));
    if (typeLabel)
        typeLabel->setText(describeIn(content.typeNames, Loc::current));
    if (sizeLabel)
        sizeLabel->setText(humanSize(item.size));
}
