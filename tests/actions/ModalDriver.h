// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Drives the modal dialogs that the item actions open (and wait in): a step runs once
// the next modal window is up, with real widgets, as a person would answer it.
#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <functional>

// Runs step on the next modal window shown (of the type T, when given). Deleting the
// returned timer calls it off.
template <typename T = QWidget> inline QTimer* whenModal(std::function<void(QWidget*)> step) {
    auto* poll = new QTimer(qApp);
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, step] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || !qobject_cast<T*>(modal))
            return;
        poll->stop();
        poll->deleteLater();
        step(modal);
    });
    poll->start();
    return poll;
}

inline QAbstractButton* buttonTitled(QWidget* window, const QString& title) {
    for (QAbstractButton* button : window->findChildren<QAbstractButton*>())
        if (button->text() == title)
            return button;
    return nullptr;
}

// The rename dialog: checks that it opened on `shown` with its field focused, replaces
// the name with the text (as a paste would: tabs included) and confirms with Return
// (the default button); then runs `after`. A dialog not as expected is cancelled, so
// the test sees no rename.
inline void answerRename(const QString& shown, const QString& text,
                         std::function<void()> after = {}) {
    whenModal([shown, text, after](QWidget* dialog) {
        // The focus is the active window's: activation, and the focus with it, may come
        // a moment after showing.
        const bool active = QTest::qWaitForWindowActive(dialog);
        auto* field = dialog->findChild<QLineEdit*>(QStringLiteral("renameField"));
        const bool focused = field && QTest::qWaitFor([field] { return field->hasFocus(); }, 2000);
        if (!active || !field || field->text() != shown || !focused)
            return (void)dialog->close();
        field->selectAll();
        field->insert(text);
        QTest::keyClick(field, Qt::Key_Return);
        if (after)
            after();
    });
}

// What an alert said, once it was dismissed.
struct SeenAlert {
    bool shown = false;
    QString title, text, informative;
};

// Waits for an alert (other modal windows may come first), notes it and closes it.
// Deleting the returned timer calls it off.
inline QTimer* dismissAlert(SeenAlert* seen) {
    return whenModal<QMessageBox>([seen](QWidget* window) {
        auto* box = static_cast<QMessageBox*>(window);
        *seen = {true, box->windowTitle(), box->text(), box->informativeText()};
        box->accept();
    });
}
