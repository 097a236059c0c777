#include "core/Node.h"
#include "text/SizeText.h"
#include "ui/ShareText.h"

#include <QTest>

using Sizes = QList<qint64>;

class TestShareText : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // The share of the first child given the folder's size and all children's sizes.
    void share_data() {
        QTest::addColumn<qint64>("folderSize");
        QTest::addColumn<bool>("listed");
        QTest::addColumn<Sizes>("children");
        QTest::addColumn<double>("fraction"); // negative: empty text
        QTest::newRow("of the folder's total") << qint64(1000) << true << Sizes{250, 100} << 0.25;
        QTest::newRow("unknown child") << qint64(1000) << true << Sizes{-1, 100} << -1.0;
        QTest::newRow("unknown total: known siblings stand in")
            << qint64(-1) << true << Sizes{300, 100, -1, 600} << 0.3;
        QTest::newRow("zero total: known siblings stand in")
            << qint64(0) << true << Sizes{50, 150} << 0.25;
        QTest::newRow("all zero") << qint64(0) << true << Sizes{0, 0, 0} << -1.0;
        QTest::newRow("listing discarded: own size") << qint64(-1) << false << Sizes{40, 60} << 1.0;
        QTest::newRow("not clamped above one") << qint64(100) << true << Sizes{170} << 1.7;
    }
    void share() {
        QFETCH(qint64, folderSize);
        QFETCH(bool, listed);
        QFETCH(Sizes, children);
        QFETCH(double, fraction);
        const NodePtr folder = Node::make("/f", true);
        folder->size = folderSize;
        NodeList nodes;
        for (qint64 size : children) {
            nodes.push_back(Node::make("/f/c", false, folder));
            nodes.back()->size = size;
        }
        if (listed)
            folder->children = nodes;
        const QString expected = fraction < 0 ? QString() : barString(fraction);
        QCOMPARE(shareText(*nodes.front()), expected);
    }

    void rootHasNoShare() {
        const NodePtr root = Node::make("/r", true);
        root->size = 100;
        QCOMPARE(shareText(*root), QString());
    }
};

QTEST_GUILESS_MAIN(TestShareText)
#include "tst_sharetext.moc"
