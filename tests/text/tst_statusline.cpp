#include "core/Node.h"
#include "text/Lang.h"
#include "text/StatusLine.h"

#include <QTest>

class TestStatusLine : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { Loc::current = Lang::en; }

    void line_data() {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<int>("children"); // -1: not listed yet
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("counted"); // "": not listed, no count to give
        // A name that is not UTF-8 still shows, with a replacement character.
        const QString path = QStringLiteral("/data/caf\uFFFD  ·  ");
        QTest::newRow("en unknown size") << "en" << qint64(-1) << 3 << path + "Calculating…"
                                         << path + "3 items  ·  Total Calculating…";
        QTest::newRow("en known size")
            << "en" << qint64(1536) << 2 << path + "2 items  ·  Total 1.5 KB"
            << path + "2 items  ·  Total 1.5 KB";
        QTest::newRow("en not listed") << "en" << qint64(4096) << -1 << path + "Calculating…"
                                       << "";
        QTest::newRow("ko unknown size")
            << "ko" << qint64(-1) << 3 << path + "계산중…" << path + "하위 3개  ·  합계 계산중…";
        QTest::newRow("ko known size")
            << "ko" << qint64(5) * 1024 * 1024 << 12 << path + "하위 12개  ·  합계 5.0 MB"
            << path + "하위 12개  ·  합계 5.0 MB";
    }
    void line() {
        QFETCH(QString, lang);
        QFETCH(qint64, size);
        QFETCH(int, children);
        QFETCH(QString, line);
        QFETCH(QString, counted);
        Loc::current = *LangInfo::fromRawValue(lang);
        const NodePtr root = Node::make("/data/caf\xe9", true);
        root->size = size;
        if (children >= 0) {
            root->children.emplace();
            for (int i = 0; i < children; ++i)
                root->children->push_back(
                    Node::make("/data/x" + QByteArray::number(i), true, root));
            // Only direct children count, not the whole tree below the root.
            if (children > 0)
                root->children->front()->children = NodeList{Node::make("/data/x0/a", false)};
        }
        QCOMPARE(statusLineForRoot(*root), line);
        if (!counted.isEmpty())
            QCOMPARE(countedStatusLine(*root), counted);
    }
};

QTEST_GUILESS_MAIN(TestStatusLine)
#include "tst_statusline.moc"
