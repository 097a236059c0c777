#include "LoopImage.h"
#include "app/AppController.h"

#include <QLabel>
#include <QTest>
#include <unistd.h>

namespace {

// The row whose name label reads name, if the panel shows one.
QWidget* rowNamed(const AppController& controller, const QString& name) {
    for (QWidget* row : controller.volumesList->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        for (const QLabel* label : row->findChildren<QLabel*>())
            if (label->text() == name)
                return row;
    return nullptr;
}

} // namespace

class TestVolumesLive : public QObject {
    Q_OBJECT
private Q_SLOTS:
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
};

QTEST_MAIN(TestVolumesLive)
#include "tst_volumeslive.moc"
