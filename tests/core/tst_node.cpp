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
        QTest::newRow("hidden") << QByteArray("/a/.cache") << ".cache" << QByteArray("/a");
        QTest::newRow("not UTF-8")
            << QByteArray("/a/caf\xe9") << QString("caf\ufffd") << QByteArray("/a");
    }
    void names() {
        QFETCH(QByteArray, url);
        QFETCH(QString, name);
        QFETCH(QByteArray, parentPath);
        const Node node(url, true);
        QCOMPARE(node.name, name);
        QCOMPARE(node.url, url); // the bytes stay as given
        QCOMPARE(deletingLastPathComponent(url), parentPath);
    }

    void freshNode() {
        const Node node("/x", true);
        QCOMPARE(node.size, qint64(-1));
        QVERIFY(!node.children.has_value());
        QCOMPARE(node.pending, qint64(0));
        QVERIFY(node.parent.expired());
    }

    void parentIsWeak() {
        NodePtr folder = Node::make("/f", true);
        NodePtr child = Node::make("/f/c", false, folder);
        folder->children = NodeList{child};
        QCOMPARE(child->parent.lock(), folder);
        folder.reset();
        QVERIFY(child->parent.lock() == nullptr);
    }
};

QTEST_GUILESS_MAIN(TestNode)
#include "tst_node.moc"
