#include "platform/FileUrl.h"
#include "platform/LaunchArguments.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

class TestLaunchArguments : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        QVERIFY(work.isValid());
        QVERIFY(QDir::setCurrent(work.path()));
        base = QFile::encodeName(QDir::currentPath());
    }

    // Each argument of a later launch, as the running program receives it and as it
    // turns back into a path there.
    void argumentsRoundTrip_data() {
        QTest::addColumn<QByteArray>("argument");
        QTest::addColumn<QString>("uriAfterBase"); // "" when the URI is absolute
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QByteArray>("path"); // after the base when relative
        QTest::newRow("plain") << QByteArray("/srv/data") << ""
                               << "file:///srv/data" << QByteArray("/srv/data");
        QTest::newRow("root") << QByteArray("/") << ""
                              << "file:///" << QByteArray("/");
        QTest::newRow("spaces") << QByteArray("/home/u/My Files") << ""
                                << "file:///home/u/My%20Files" << QByteArray("/home/u/My Files");
        QTest::newRow("non-ASCII") << QByteArray("/data/Fotos/Übersicht 日本") << ""
                                   << "file:///data/Fotos/%C3%9Cbersicht%20%E6%97%A5%E6%9C%AC"
                                   << QByteArray("/data/Fotos/Übersicht 日本");
        QTest::newRow("not UTF-8") << QByteArray("/data/caf\xe9\xff") << ""
                                   << "file:///data/caf%E9%FF" << QByteArray("/data/caf\xe9\xff");
        QTest::newRow("URI marks in a name")
            << QByteArray("/a/100%#1?x=y;z") << ""
            << "file:///a/100%25%231%3Fx%3Dy%3Bz" << QByteArray("/a/100%#1?x=y;z");
        QTest::newRow("relative") << QByteArray("sub dir/x") << "/sub%20dir/x"
                                  << "" << QByteArray("/sub dir/x");
        QTest::newRow("dot") << QByteArray(".") << "/."
                             << "" << QByteArray("/.");
        QTest::newRow("file URI kept")
            << QByteArray("file:///home/u/My%20Files") << ""
            << "file:///home/u/My%20Files" << QByteArray("/home/u/My Files");
        QTest::newRow("file URI not UTF-8") << QByteArray("file:///x/caf%E9") << ""
                                            << "file:///x/caf%E9" << QByteArray("/x/caf\xe9");
    }
    void argumentsRoundTrip() {
        QFETCH(QByteArray, argument);
        QFETCH(QString, uriAfterBase);
        QFETCH(QString, uri);
        QFETCH(QByteArray, path);
        const bool relative = !uriAfterBase.isEmpty();
        const QString expectedUri =
            relative ? fileUrlFromPathBytes(base).toString(QUrl::FullyEncoded) + uriAfterBase : uri;
        const QByteArray expectedPath = relative ? base + path : path;

        const QStringList uris = urisForArguments({argument});
        QCOMPARE(uris, QStringList{expectedUri});
        QCOMPARE(localPathBytes(QUrl(uris.first())), expectedPath);
        QCOMPARE(argumentAsPath(uris.first().toLatin1()), expectedPath);
    }

    void severalArgumentsInOrder() {
        const QStringList uris = urisForArguments({"/b", "", "/a"});
        QCOMPARE(uris, (QStringList{"file:///b", "file:///a"}));
    }

    // A path that is not a URI stays as it was, even one that looks half like one.
    void argumentAsPathKeepsPaths() {
        QCOMPARE(argumentAsPath("/srv/file:x"), QByteArray("/srv/file:x"));
        QCOMPARE(argumentAsPath("file:relative"), QByteArray("file:relative"));
        QCOMPARE(argumentAsPath("caf\xe9"), QByteArray("caf\xe9"));
    }

private:
    QTemporaryDir work{QDir::tempPath() + QStringLiteral("/uris-XXXXXX")};
    QByteArray base;
};

QTEST_GUILESS_MAIN(TestLaunchArguments)
#include "tst_launcharguments.moc"
