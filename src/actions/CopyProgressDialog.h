#pragma once

#include <QDialog>

class QLabel;

// The modal window of a running copy: the item's name, the bytes copied so far and a
// cancel button. It blocks other input while the window stays painted; it closes only
// when the copy says it has finished (a cancel is a request to the copy).
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
