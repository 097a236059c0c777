// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>

class QLabel;

// The window of a running copy: the item's name, the bytes copied so far and a cancel
// button. Modal to the main window only, never waited in: the program goes on while it
// shows. It closes when the copy has finished or the person cancels (a cancel is a
// request to the copy, which then removes what it made on its own); it deletes itself
// once closed.
class CopyProgressDialog : public QDialog {
    Q_OBJECT
public:
    CopyProgressDialog(QWidget* parent, const QString& title, const QString& itemName);

    void showBytesDone(qint64 bytes);
    // The copy has ended: the dialog closes.
    void finish();

    void reject() override;

Q_SIGNALS:
    void cancelRequested();

private:
    QLabel* bytes;
    bool finished = false;
};
