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

// Runs step on the next modal window shown after `previous` (none by default). Deleting
// the returned timer calls it off.
inline QTimer* whenModal(std::function<void(QWidget*)> step, QWidget* previous = nullptr) {
    auto* poll = new QTimer(qApp);
    poll->setInterval(5);
    QPointer<QWidget> before(previous);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, step, before] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal == before)
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
        auto* field = dialog->findChild<QLineEdit*>(QStringLiteral("renameField"));
        if (!field || field->text() != shown || !field->hasFocus())
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

inline void dismissAlert(SeenAlert* seen) {
    whenModal([seen](QWidget* window) {
        auto* box = qobject_cast<QMessageBox*>(window);
        if (!box)
            return (void)window->close();
        *seen = {true, box->windowTitle(), box->text(), box->informativeText()};
        box->accept();
    });
}
