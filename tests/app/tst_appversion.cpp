#include "app/AppVersion.h"

#include <QTest>

class TestAppVersion : public QObject {
    Q_OBJECT
private Q_SLOTS:
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

    // The build's own version reaches the About window unchanged.
    void buildVersion() {
        QCOMPARE(appVersion(), QStringLiteral(SIZELOOM_VERSION));
        QVERIFY(appVersion() != QStringLiteral("?"));
    }
};

QTEST_GUILESS_MAIN(TestAppVersion)
#include "tst_appversion.moc"
