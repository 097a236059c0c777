// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "actions/PreviewContent.h"
#include "core/ItemRef.h"

#include <QDialog>

class QLabel;
class QVBoxLayout;

// Sizeloom's own preview of an item, for desktops without a previewer: titled with the
// item's name, it shows an image scaled to fit, the start of a text file, or for
// anything else the item's icon, name, type and size. It opens at once with the name
// and size and fills in when the content has been read on a worker. Space or Esc
// closes it; it is deleted when closed, or with its owner.
class PreviewWindow : public QDialog {
    Q_OBJECT
public:
    PreviewWindow(const ItemRef& node, QObject* owner);

    const ItemRef& node() const { return item; }
    // The type and size texts in the current language.
    void retranslate();

    // Largest image shown, in logical pixels.
    static constexpr QSize kImageFit{720, 540};

private:
    void showContent(const PreviewContent& content);
    QWidget* makeSummary();

    const ItemRef item;
    PreviewContent content;
    QVBoxLayout* body = nullptr;
    QWidget* shown = nullptr;
    QLabel* typeLabel = nullptr;
    QLabel* sizeLabel = nullptr;
};
