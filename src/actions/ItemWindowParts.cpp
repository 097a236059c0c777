// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/ItemWindowParts.h"

#include "ui/AppIcon.h"
#include "ui/DeleteWith.h"
#include "ui/PlainText.h"

#include <QFileIconProvider>
#include <QLabel>
#include <QMimeDatabase>
#include <QShortcut>

QIcon iconForMimeType(const QString& mimeType) {
    const QMimeType type = QMimeDatabase().mimeTypeForName(mimeType);
    const bool folder = mimeType == QLatin1String("inode/directory");
    if (folder && QIcon::hasThemeIcon(QStringLiteral("folder")))
        return QIcon::fromTheme(QStringLiteral("folder"));
    for (const QString& name : {type.iconName(), type.genericIconName()})
        if (!name.isEmpty() && QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    return QFileIconProvider().icon(folder ? QFileIconProvider::Folder : QFileIconProvider::File);
}

void setUpItemWindow(QWidget* window, const QString& name, QObject* owner) {
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowIcon(appIcon());
    window->setWindowTitle(plainWindowTitle(name));
    window->setAccessibleName(name);
    deleteWith(owner, window);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), window);
    QObject::connect(escape, &QShortcut::activated, window, &QWidget::close);
}
