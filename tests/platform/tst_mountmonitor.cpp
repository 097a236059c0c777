// SPDX-License-Identifier: GPL-2.0-or-later
#include "LoopImage.h"
#include "platform/MountMonitor.h"

#include <QSignalSpy>
#include <QTest>

class TestMountMonitor : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // That each mount and unmount is told is seen in the volumes panel (tst_volumeslive).
    void oneSignalForChangesThatCameTogether() {
        MountMonitor monitor;
        QVERIFY(monitor.isWatching());
        QSignalSpy changed(&monitor, &MountMonitor::changed);

        // Mounted and unmounted before the event loop runs: both changes wait together.
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, QStringLiteral("batched"));
        QVERIFY(image.unmount());
        QTRY_VERIFY_WITH_TIMEOUT(changed.count() >= 1, 1000);
        QCoreApplication::processEvents();
        QCOMPARE(changed.count(), 1);
    }
};

QTEST_MAIN(TestMountMonitor)
#include "tst_mountmonitor.moc"
