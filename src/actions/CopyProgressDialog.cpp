// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/CopyProgressDialog.h"

#include "text/Lang.h"
#include "text/SizeText.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

CopyProgressDialog::CopyProgressDialog(QWidget* parent, const QString& title,
                                       const QString& itemName)
    : QDialog(parent), bytes(new QLabel(this)) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    auto* name = new QLabel(this);
    name->setTextFormat(Qt::PlainText);
    name->setText(itemName);
    name->setMinimumWidth(320);
    bytes->setTextFormat(Qt::PlainText);
    showBytesDone(0);

    // How much is left is not known: the bar only shows that the copy is alive.
    auto* bar = new QProgressBar(this);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setAccessibleName(title);
    bar->setAccessibleDescription(itemName);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(t(QStringLiteral("btn_cancel")), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &CopyProgressDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(name);
    layout->addWidget(bar);
    layout->addWidget(bytes);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void CopyProgressDialog::showBytesDone(qint64 done) {
    bytes->setText(humanSize(done));
}

void CopyProgressDialog::finish() {
    if (finished)
        return;
    finished = true;
    accept();
}

void CopyProgressDialog::reject() {
    // Escape, the close button and Cancel all ask the copy to stop; the copy then
    // removes what it made and finishes.
    if (finished)
        QDialog::reject();
    else
        Q_EMIT cancelRequested();
}
