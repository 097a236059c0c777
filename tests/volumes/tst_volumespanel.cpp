#include "app/AppController.h"
#include "platform/MountTable.h"
#include "volumes/ListedVolume.h"
#include "volumes/PermissionSettings.h"

#include <QBoxLayout>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace {

QList<QWidget*> rows(const AppController& controller) {
    return controller.volumesList->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
}

QString capacityText(QWidget* row) {
    return qobject_cast<QLabel*>(row->layout()->itemAt(3)->widget())->text();
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
        Loc::current = Lang::en;
        qputenv("PATH", savedPath);
        for (const QString& name : QDir(bin.path()).entryList(QDir::Files))
            QFile::remove(bin.filePath(name));
    }

    void panelLayout() {
        AppController controller;
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        QCOMPARE(controller.volumesPanel, panel.get());
        QVERIFY(controller.volumesList && controller.volHeaderLabel && controller.grantButton);
        QCOMPARE(controller.volHeaderLabel->text(), t("vol_header"));
        QCOMPARE(controller.volHeaderLabel->font().pixelSize(), 11);
        QCOMPARE(controller.volHeaderLabel->font().weight(), QFont::DemiBold);
        QCOMPARE(controller.grantButton->text(), t("vol_grant"));
        QCOMPARE(controller.grantButton->font().pixelSize(), 10);

        auto* panelLayout = qobject_cast<QVBoxLayout*>(panel->layout());
        QVERIFY(panelLayout);
        QCOMPARE(panelLayout->spacing(), 7);
        auto* header = qobject_cast<QHBoxLayout*>(panelLayout->itemAt(0)->layout());
        QVERIFY(header);
        QCOMPARE(header->spacing(), 8);
        QCOMPARE(header->itemAt(0)->widget(), controller.volHeaderLabel);
        QVERIFY(header->itemAt(1)->spacerItem());
        QCOMPARE(header->itemAt(2)->widget(), controller.grantButton);
        QCOMPARE(panelLayout->itemAt(1)->widget(), controller.volumesList);
        QCOMPARE(static_cast<QBoxLayout*>(controller.volumesList->layout())->spacing(), 5);

        // The button sits at the right end, the header label at the left.
        panel->resize(600, 200);
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
        QCOMPARE(controller.volHeaderLabel->x(), 0);
        QCOMPARE(controller.grantButton->geometry().right(), panel->width() - 1);
    }

    void refreshListsEveryVolumeOnce() {
        AppController controller;
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

    void refreshBeforeThePanelDoesNothing() {
        AppController controller;
        controller.refreshVolumes();
        QVERIFY(!controller.volumesList);
    }

    void refreshWritesRowsInTheCurrentLanguageOnly() {
        AppController controller;
        std::unique_ptr<QWidget> panel(controller.makeVolumesPanel());
        controller.refreshVolumes();
        QVERIFY(!rows(controller).isEmpty());
        QVERIFY(capacityText(rows(controller).first()).contains("Free "));
        const QString header = controller.volHeaderLabel->text();
        const QString grant = controller.grantButton->text();
        Loc::current = Lang::ko;
        controller.refreshVolumes();
        QVERIFY(capacityText(rows(controller).first()).contains(QString::fromUtf8("남은 ")));
        // The header and the button are the language switch's to re-set.
        QCOMPARE(controller.volHeaderLabel->text(), header);
        QCOMPARE(controller.grantButton->text(), grant);
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
