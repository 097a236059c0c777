// SPDX-License-Identifier: GPL-2.0-or-later
// Results reach the main thread in slices; work a slice leaves the display runs in a
// pass of the event loop of its own, between that slice and the next.
#include "platform/MainThreadInbox.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

class TestInbox : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void displayWorkHasAPassOfItsOwn() {
        const auto inbox = MainThreadInbox::make();
        QStringList happened;
        // Posted now, it runs in the next pass of the event loop.
        const auto nextPass = [&](const QString& what) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [&happened, what] { happened << what; },
                Qt::QueuedConnection);
        };
        bool first = true;
        inbox->displayWorkDue = [&] {
            happened << "slice ends";
            if (!first)
                return false;
            first = false;
            nextPass("pass after the slice");
            return true;
        };
        inbox->displayWork = [&] {
            happened << "display";
            nextPass("pass after the display");
        };
        // The first result takes longer than a slice, so the second waits for the next.
        inbox->post([&] {
            QThread::msleep(MainThreadInbox::sliceMs + 4);
            happened << "a";
        });
        inbox->post([&] { happened << "b"; });
        QTRY_COMPARE(happened.size(), 7);
        QCOMPARE(happened, (QStringList{"a", "slice ends", "pass after the slice", "display",
                                        "pass after the display", "b", "slice ends"}));
    }
};

QTEST_GUILESS_MAIN(TestInbox)
#include "tst_inbox.moc"
