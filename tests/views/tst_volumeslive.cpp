// SPDX-License-Identifier: GPL-2.0-or-later
// The volumes panel on this machine's real mounts: one row a volume, kept up to date
// on its own as volumes come and go, and its button to the settings program.
#include "LoopImage.h"
#include "platform/MountTable.h"
#include "views/ListedVolume.h"
#include "views/PermissionSettings.h"
#include "views/VolumeReader.h"
#include "views/VolumesPanel.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <unistd.h>

namespace {

QList<QWidget*> rows(const VolumesPanel& panel) {
    return panel.rows()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
}

// The row whose name label reads name, if the panel shows one.
QWidget* rowNamed(const VolumesPanel& panel, const QString& name) {
    for (QWidget* row : rows(panel))
        for (const QLabel* label : row->findChildren<QLabel*>())
            if (label->text() == name)
                return row;
    return nullptr;
}

} // namespace

class TestVolumesLive : public QObject {
    Q_OBJECT
    const QByteArray savedPath = qgetenv("PATH");

private Q_SLOTS:
    void cleanup() { qputenv("PATH", savedPath); }

    void refreshListsEveryVolumeOnce() {
        VolumesPanel panel;
        QVERIFY(rows(panel).isEmpty());
        qsizetype expected = 0;
        for (const VolumeInfo& volume : mountedVolumes())
            expected += listedVolume(volume).has_value();
        QVERIFY2(expected > 0, "the root volume at least has a row");
        QSignalSpy read(panel.findChild<VolumeReader*>(), &VolumeReader::volumesRead);
        // Asked twice in a row: the second question takes over the first.
        panel.refresh();
        panel.refresh();
        QTRY_VERIFY(!read.isEmpty());
        QCOMPARE(rows(panel).size(), expected);
        QCOMPARE(panel.rows()->layout()->count(), expected);
    }

    void mountedImageComesAndGoesOnItsOwn() {
        VolumesPanel panel;
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));

        // A label of this run only (ext4 allows 16 bytes), so the row is surely its own.
        const QString label = QStringLiteral("sizeloom%1").arg(getpid() % 100000);
        QVERIFY(!rowNamed(panel, label));
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, label);
        QTRY_VERIFY_WITH_TIMEOUT(rowNamed(panel, label), 1000);

        QVERIFY(image.unmount());
        QTRY_VERIFY_WITH_TIMEOUT(!rowNamed(panel, label), 1000);
    }

    // Stand-ins for the settings programs note how they were started.
    void grantButtonOpensAppPermissions_data() {
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<QString>("started"); // program and arguments, one a line
        QTest::newRow("GNOME") << QStringList{"gnome-control-center"}
                               << "gnome-control-center\napplications\n";
        QTest::newRow("KDE") << QStringList{"systemsettings"}
                             << "systemsettings\nkcm_app-permissions\n";
        QTest::newRow("both, GNOME first") << QStringList{"systemsettings", "gnome-control-center"}
                                           << "gnome-control-center\napplications\n";
        QTest::newRow("neither") << QStringList{} << "";
    }
    void grantButtonOpensAppPermissions() {
        QFETCH(QStringList, installed);
        QFETCH(QString, started);
        QTemporaryDir bin;
        for (const QString& name : installed) {
            QFile script(bin.filePath(name));
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write("#!/bin/sh\nprintf '%s\\n' \"${0##*/}\" \"$@\" >\"${0%/*}/ran\"\n");
            QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        }
        qputenv("PATH", QFile::encodeName(bin.path()));
        QCOMPARE(appPermissionsSettings().has_value(), !started.isEmpty());
        VolumesPanel panel;
        panel.findChild<QPushButton*>()->click();
        QFile ran(bin.filePath("ran"));
        if (!started.isEmpty())
            QTRY_VERIFY_WITH_TIMEOUT(ran.size() > 0, 5000);
        QVERIFY(ran.open(QIODevice::ReadOnly) || started.isEmpty());
        QCOMPARE(QString::fromUtf8(ran.readAll()), started);
    }
};

QTEST_MAIN(TestVolumesLive)
#include "tst_volumeslive.moc"
