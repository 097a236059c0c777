#include "app/AppIcon.h"

#include <QImage>
#include <QTest>

class TestAppIcon : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void drawnAtDeviceResolution_data() {
        QTest::addColumn<int>("side");
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("88 at 1x") << 88 << 1.0;
        QTest::newRow("88 at 2x") << 88 << 2.0;
        QTest::newRow("88 at 1.5x") << 88 << 1.5;
        QTest::newRow("16 at 1x") << 16 << 1.0;
    }
    void drawnAtDeviceResolution() {
        QFETCH(int, side);
        QFETCH(qreal, ratio);
        const QPixmap pixmap = appIconPixmap(side, ratio);
        const int pixels = qRound(side * ratio);
        QCOMPARE(pixmap.size(), QSize(pixels, pixels));
        QCOMPARE(pixmap.devicePixelRatio(), ratio);
        QCOMPARE(pixmap.deviceIndependentSize(), QSizeF(pixels / ratio, pixels / ratio));
    }

    // The mark itself: transparent outside the folder, accent face, white bars.
    void drawsTheMark() {
        const QImage image = appIconPixmap(128, 1.0).toImage();
        QCOMPARE(image.pixelColor(2, 2).alpha(), 0);
        QCOMPARE(image.pixelColor(110, 100).name(), QStringLiteral("#ff5c1f"));
        QCOMPARE(image.pixelColor(60, 57).name(), QStringLiteral("#ffffff"));
        // The second bar is shorter than the first: the face shows beside it.
        QCOMPARE(image.pixelColor(95, 74).name(), QStringLiteral("#ff5c1f"));
    }

    void windowIconLoads() {
        const QIcon icon = appIcon();
        QVERIFY(!icon.isNull());
        const QImage image = icon.pixmap(QSize(128, 128), 1.0).toImage();
        QCOMPARE(image.size(), QSize(128, 128));
        QCOMPARE(image.pixelColor(110, 100).name(), QStringLiteral("#ff5c1f"));
    }
};

QTEST_MAIN(TestAppIcon)
#include "tst_appicon.moc"
