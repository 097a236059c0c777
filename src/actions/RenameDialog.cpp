// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/RenameDialog.h"

#include "text/Lang.h"
#include "ui/AppIcon.h"
#include "ui/PlainText.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QLabel* wrappedLabel(const QString& text, QWidget* parent) {
    QLabel* label = makePlainLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

std::optional<QString> askNewName(QWidget* parent, const QString& currentName) {
    QDialog dialog(parent);
    dialog.setWindowTitle(t(QStringLiteral("rename_title")));
    dialog.setWindowModality(Qt::ApplicationModal);

    auto* icon = new QLabel(&dialog);
    icon->setPixmap(appIconPixmap(48, dialog.devicePixelRatioF()));
    icon->setAlignment(Qt::AlignTop);

    QLabel* message = wrappedLabel(t(QStringLiteral("rename_title")), &dialog);
    QFont bold = message->font();
    bold.setBold(true);
    message->setFont(bold);
    QLabel* informative = wrappedLabel(t(QStringLiteral("rename_msg")), &dialog);

    auto* field = new QLineEdit(currentName, &dialog);
    field->setObjectName(QStringLiteral("renameField"));
    field->setFixedSize(260, 24);
    field->setAccessibleName(t(QStringLiteral("rename_title")));
    field->setAccessibleDescription(t(QStringLiteral("rename_msg")));
    informative->setBuddy(field);

    auto* buttons = new QDialogButtonBox(&dialog);
    QPushButton* rename =
        buttons->addButton(t(QStringLiteral("btn_rename")), QDialogButtonBox::AcceptRole);
    buttons->addButton(t(QStringLiteral("btn_cancel")), QDialogButtonBox::RejectRole);
    rename->setDefault(true);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

    auto* text = new QVBoxLayout;
    text->addWidget(message);
    text->addWidget(informative);
    text->addWidget(field);
    auto* row = new QHBoxLayout;
    row->addWidget(icon);
    row->addLayout(text);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(row);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    field->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return field->text();
}
