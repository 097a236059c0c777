// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/ErrorAlert.h"

#include "platform/SystemReason.h"
#include "text/Lang.h"

#include <QLabel>
#include <QMessageBox>

void showErrorAlert(QWidget* parent, const QString& title, const QString& itemName, int error) {
    QMessageBox box(QMessageBox::Critical, title, itemName, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(systemReason(error, LangInfo::rawValue(Loc::current)));
    // A name is never markup, nor is the reason.
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    box.setWindowModality(Qt::ApplicationModal);
    box.exec();
}
