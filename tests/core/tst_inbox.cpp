// Results reach the main thread in slices; a display given work by a slice gets a turn
// of the event loop of its own before the next slice.
#include "core/MainThreadInbox.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>
#include <QTimer>

class TestInbox : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void displayWorkComesBeforeTheNextSlice() {
        const auto inbox = MainThreadInbox::make();
        QStringList happened;
        bool first = true;
        inbox->afterSlice = [&] {
            happened << "slice ends";
            if (std::exchange(first, false))
                // What a view does with new rows: lays them out on the next turn.
                QTimer::singleShot(0, [&] { happened << "display"; });
            return true;
        };
        // The first result takes longer than a slice, so the second waits for the next.
        inbox->post([&] {
            QThread::msleep(MainThreadInbox::sliceMs + 4);
            happened << "a";
        });
        inbox->post([&] { happened << "b"; });
        QTRY_COMPARE(happened.size(), 5);
        QCOMPARE(happened, (QStringList{"a", "slice ends", "display", "b", "slice ends"}));
    }
};

QTEST_GUILESS_MAIN(TestInbox)
#include "tst_inbox.moc"
