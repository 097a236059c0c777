#include "core/Node.h"

#include <QTest>

class TestNode : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void names_data() {
        QTest::addColumn<QByteArray>("url");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("parentPath");
        QTest::newRow("file-system root") << QByteArray("/") << "/" << QByteArray("/");
        QTest::newRow("top folder") << QByteArray("/home") << "home" << QByteArray("/");
        QTest::newRow("nested") << QByteArray("/home/u/Music") << "Music" << QByteArray("/home/u");
        QTest::newRow("trailing slash") << QByteArray("/home/u/") << "u" << QByteArray("/home");
        QTest::newRow("not UTF-8")
            << QByteArray("/a/caf\xe9") << QString("caf\ufffd") << QByteArray("/a");
    }
    void names() {
        QFETCH(QByteArray, url);
        QFETCH(QString, name);
        QFETCH(QByteArray, parentPath);
        QCOMPARE(Node(url, true).name, name);
        QCOMPARE(deletingLastPathComponent(url), parentPath);
    }
};

QTEST_GUILESS_MAIN(TestNode)
#include "tst_node.moc"
