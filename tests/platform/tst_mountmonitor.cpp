#include "LoopImage.h"
#include "platform/MountMonitor.h"

#include <QSignalSpy>
#include <QTest>

class TestMountMonitor : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void mountAndUnmountAreTold() {
        if (const QString reason = LoopImage::unavailableReason(); !reason.isEmpty())
            QSKIP(qPrintable(reason));
        MountMonitor monitor;
        QVERIFY(monitor.isWatching());
        QSignalSpy changed(&monitor, &MountMonitor::changed);

        LoopImage image;
        QString skipReason;
        const bool mounted = image.mount(QStringLiteral("monitored"), &skipReason);
        if (!skipReason.isEmpty())
            QSKIP(qPrintable(skipReason));
        QVERIFY(mounted);
        QTRY_VERIFY_WITH_TIMEOUT(changed.count() >= 1, 1000);

        changed.clear();
        QVERIFY(image.unmount());
        QTRY_VERIFY_WITH_TIMEOUT(changed.count() >= 1, 1000);
    }

    void oneSignalForChangesThatCameTogether() {
        if (const QString reason = LoopImage::unavailableReason(); !reason.isEmpty())
            QSKIP(qPrintable(reason));
        MountMonitor monitor;
        QSignalSpy changed(&monitor, &MountMonitor::changed);

        // Mounted and unmounted before the event loop runs: both changes wait together.
        LoopImage image;
        QString skipReason;
        const bool mounted = image.mount(QStringLiteral("batched"), &skipReason);
        if (!skipReason.isEmpty())
            QSKIP(qPrintable(skipReason));
        QVERIFY(mounted);
        QVERIFY(image.unmount());
        QTRY_VERIFY_WITH_TIMEOUT(changed.count() >= 1, 1000);
        QCoreApplication::processEvents();
        QCOMPARE(changed.count(), 1);
    }
};

QTEST_MAIN(TestMountMonitor)
#include "tst_mountmonitor.moc"
