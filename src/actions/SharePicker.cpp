// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/SharePicker.h"

#include "text/Lang.h"

#include <QMenu>

namespace {

QString titleOf(ShareService service) {
    switch (service) {
    case ShareService::EmailPortal:
    case ShareService::EmailProgram:
        return t(QStringLiteral("share_email"));
    case ShareService::Bluetooth:
        return t(QStringLiteral("share_bluetooth"));
    }
    return {};
}

} // namespace

QMenu* makeSharePicker(const QList<ShareService>& services, const QByteArray& path,
                       QObject* context, QWidget* parent) {
    auto* picker = new QMenu(parent);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->setAccessibleName(t(QStringLiteral("ctx_share")));
    for (ShareService service : services) {
        QAction* entry = picker->addAction(titleOf(service));
        QObject::connect(entry, &QAction::triggered, context,
                         [service, path, context] { shareThrough(service, path, context); });
    }
    if (services.isEmpty())
        picker->addAction(t(QStringLiteral("share_none")))->setEnabled(false);
    return picker;
}
