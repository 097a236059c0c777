#include "app/AppController.h"
#include "platform/MountTable.h"
#include "volumes/ListedVolume.h"
#include "volumes/PermissionSettings.h"

#include <QDir>
#include <QFile>
#include <QLayout>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace {

QList<QWidget*> rows(const AppController& controller) {
    return controller.volumesList->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
}

} // namespace

class TestVolumesPanel : public QObject {
    Q_OBJECT
    QTemporaryDir bin;
    QByteArray savedPath;

    // A stand-in for a settings program that notes how it was started.
    void installProgram(const QString& name) {
        QFile script(bin.filePath(name));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.ran\"\n");
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(bin.isValid());
        savedPath = qgetenv("PATH");
    }
    void cleanup() {
        qputenv("PATH", savedPath);
        for (const QString& name : QDir(bin.path()).entryList(QDir::Files))
            QFile::remove(bin.filePath(name));
    }

    void refreshListsEveryVolumeOnce() {
        AppController controller;
        controller.refreshVolumes(); // before the panel exists: nothing to fill
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        QVERIFY(rows(controller).isEmpty());
        qsizetype expected = 0;
        for (const VolumeInfo& volume : mountedVolumes())
            expected += listedVolume(volume).has_value();
        QVERIFY2(expected > 0, "the root volume at least has a row");
        controller.refreshVolumes();
        QCOMPARE(rows(controller).size(), expected);
        controller.refreshVolumes();
        QCOMPARE(rows(controller).size(), expected);
        QCOMPARE(controller.volumesList->layout()->count(), expected);
    }

    void grantButtonOpensAppPermissions_data() {
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("GNOME") << QStringList{"gnome-control-center"} << "gnome-control-center"
                               << "applications\n";
        QTest::newRow("KDE") << QStringList{"systemsettings"} << "systemsettings"
                             << "kcm_app-permissions\n";
        QTest::newRow("both, GNOME first")
            << QStringList{"systemsettings", "gnome-control-center"} << "gnome-control-center"
            << "applications\n";
    }
    void grantButtonOpensAppPermissions() {
        QFETCH(QStringList, installed);
        QFETCH(QString, program);
        QFETCH(QString, arguments);
        for (const QString& name : installed)
            installProgram(name);
        qputenv("PATH", QFile::encodeName(bin.path()));
        AppController controller;
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        controller.grantButton->click();
        QFile ran(bin.filePath(program + ".ran"));
        QTRY_VERIFY_WITH_TIMEOUT(ran.exists() && ran.size() > 0, 5000);
        QVERIFY(ran.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(ran.readAll()), arguments);
    }

    void noSettingsProgramNoCommand() {
        qputenv("PATH", QFile::encodeName(bin.path()));
        QVERIFY(!appPermissionsSettings());
    }
};

QTEST_MAIN(TestVolumesPanel)
#include "tst_volumespanel.moc"
