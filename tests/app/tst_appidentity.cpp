// SPDX-License-Identifier: GPL-2.0-or-later
// The program's icon and version, as the window, the About window and the desktop get them.
#include "ui/AppIcon.h"
#include "window/AppVersion.h"

#include <QImage>
#include <QTest>

class TestAppIdentity : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // The mark itself: transparent outside the folder, accent face, white bars; the
    // window's icon is the same picture.
    void iconDrawsTheMark() {
        for (const QImage& image : {appIconPixmap(128, 1.0).toImage(),
                                    appIcon().pixmap(QSize(128, 128), 1.0).toImage()}) {
            QCOMPARE(image.size(), QSize(128, 128));
            QCOMPARE(image.pixelColor(2, 2).alpha(), 0);
            QCOMPARE(image.pixelColor(110, 100).name(), QStringLiteral("#ff5c1f"));
            QCOMPARE(image.pixelColor(60, 57).name(), QStringLiteral("#ffffff"));
            // The second bar is shorter than the first: the face shows beside it.
            QCOMPARE(image.pixelColor(95, 74).name(), QStringLiteral("#ff5c1f"));
        }
        // Drawn for the screen's density: 88 points at 1.5 are 132 pixels.
        const QPixmap dense = appIconPixmap(88, 1.5);
        QCOMPARE(dense.size(), QSize(132, 132));
        QCOMPARE(dense.devicePixelRatio(), 1.5);
    }

    void versionText_data() {
        QTest::addColumn<QByteArray>("raw");
        QTest::addColumn<bool>("missing");
        QTest::addColumn<QString>("text");
        QTest::newRow("release") << QByteArray("0.1.0") << false << "0.1.0";
        QTest::newRow("empty") << QByteArray() << false << "?";
        QTest::newRow("missing") << QByteArray() << true << "?";
    }
    void versionText() {
        QFETCH(QByteArray, raw);
        QFETCH(bool, missing);
        QFETCH(QString, text);
        QCOMPARE(::versionText(missing ? nullptr : raw.constData()), text);
    }
};

QTEST_MAIN(TestAppIdentity)
#include "tst_appidentity.moc"
