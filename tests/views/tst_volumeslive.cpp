// The volumes panel on this machine's real mounts: one row a volume, kept up to date
// on its own as volumes come and go, and its button to the settings program.
#include "LoopImage.h"
#include "app/AppController.h"
#include "platform/MountTable.h"
#include "views/ListedVolume.h"
#include "views/PermissionSettings.h"
#include "views/VolumeReader.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <unistd.h>

namespace {

QList<QWidget*> rows(const AppController& controller) {
    return controller.volumesList->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
}

// The row whose name label reads name, if the panel shows one.
QWidget* rowNamed(const AppController& controller, const QString& name) {
    for (QWidget* row : rows(controller))
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
        AppController controller;
        controller.refreshVolumes(); // before the panel exists: nothing to fill
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        QVERIFY(rows(controller).isEmpty());
        qsizetype expected = 0;
        for (const VolumeInfo& volume : mountedVolumes())
            expected += listedVolume(volume).has_value();
        QVERIFY2(expected > 0, "the root volume at least has a row");
        QSignalSpy read(controller.volumeReader, &VolumeReader::volumesRead);
        // Asked twice in a row: the second question takes over the first.
        controller.refreshVolumes();
        controller.refreshVolumes();
        QTRY_VERIFY(!read.isEmpty());
        QCOMPARE(rows(controller).size(), expected);
        QCOMPARE(controller.volumesList->layout()->count(), expected);
    }

    void mountedImageComesAndGoesOnItsOwn() {
        AppController controller;
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        controller.refreshVolumes();
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel.get()));

        // A label of this run only (ext4 allows 16 bytes), so the row is surely its own.
        const QString label = QStringLiteral("sizeloom%1").arg(getpid() % 100000);
        QVERIFY(!rowNamed(controller, label));
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, label);
        QTRY_VERIFY_WITH_TIMEOUT(rowNamed(controller, label), 1000);

        QVERIFY(image.unmount());
        QTRY_VERIFY_WITH_TIMEOUT(!rowNamed(controller, label), 1000);
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
        AppController controller;
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        controller.grantButton->click();
        QFile ran(bin.filePath("ran"));
        if (!started.isEmpty())
            QTRY_VERIFY_WITH_TIMEOUT(ran.size() > 0, 5000);
        QVERIFY(ran.open(QIODevice::ReadOnly) || started.isEmpty());
        QCOMPARE(QString::fromUtf8(ran.readAll()), started);
    }
};

QTEST_MAIN(TestVolumesLive)
#include "tst_volumeslive.moc"
