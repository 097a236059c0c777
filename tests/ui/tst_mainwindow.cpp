#include "TempTree.h"
#include "WindowFixture.h"
#include "text/SizeText.h"
#include "ui/DropView.h"

#include <QApplication>
#include <QMimeData>

using namespace temptree;

namespace {

bool visible(QWidget* widget) {
    return widget && widget->isVisibleTo(widget->window());
}

using Names = QList<QByteArray>;

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT
    Dir tmp;

    // big (folder, 400 KB), mid (file, 200 KB), small (folder, 20 KB), tiny (file).
    QByteArray sampleTree() {
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "small"));
        writeFile(join(folder, "small/s"), 20000);
        writeFile(join(folder, "tiny"), 10);
        makeDir(join(folder, "big"));
        writeFile(join(folder, "big/b1"), 250000);
        writeFile(join(folder, "big/b2"), 150000);
        writeFile(join(folder, "mid"), 200000);
        return folder;
    }

    // One face shows, the other is hidden; the volumes panel is always there.
    static void checkFace(AppController& c, bool browsing) {
        for (QWidget* view : std::initializer_list<QWidget*>{c.topBar, c.scroll, c.status})
            QCOMPARE(visible(view), browsing);
        QCOMPARE(visible(c.emptyState), !browsing);
        QCOMPARE(visible(c.credit), !browsing);
        QVERIFY(visible(c.volumesPanel));
        QCOMPARE(c.upButton->isEnabled(), browsing);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void emptyFaceAtLaunch() {
        WindowFixture f;
        checkFace(f.c, false);
        QCOMPARE(f.c.window->windowTitle(), QString("Sizeloom"));
        QCOMPARE(f.c.status->text(), t("status_initial"));
        QCOMPARE(f.c.emptyTitle->text(), QString("Drop a folder here"));
        QCOMPARE(f.model().rowCount(), 0);
    }

    // Both forms of the status line, unknown then known cells, and the sorted level.
    void openShowsTheFolderAndItsTotal() {
        WindowFixture f;
        AppController& c = f.c;
        const QByteArray folder = sampleTree();
        const QString path = QFile::decodeName(folder);
        c.openPath(folder);
        checkFace(c, true);
        QCOMPARE(c.pathField->text(), path);
        QCOMPARE(c.status->text(), path + QString::fromUtf8("  ·  Calculating…"));
        QVERIFY(c.outline->isExpanded(f.rootIndex()));
        // Nothing is applied before the event loop runs: every size is still unknown.
        const QModelIndex firstSize = f.model().index(0, TreeModel::SizeColumn, f.rootIndex());
        QCOMPARE(firstSize.data().toString(), QString::fromUtf8("Calculating…"));
        QVERIFY(firstSize.data(Qt::ForegroundRole).isValid());
        QVERIFY(firstSize.siblingAtColumn(TreeModel::ShareColumn).data().toString().isEmpty());

        QVERIFY(f.settled());
        const QString total = humanSize(duBytes(folder));
        QCOMPARE(c.status->text(), path + QString::fromUtf8("  ·  4 items  ·  Total ") + total);
        QCOMPARE(f.rowNames(f.rootIndex()), (Names{"big", "mid", "small", "tiny"}));
        QCOMPARE(f.model().index(0, TreeModel::SizeColumn).data().toString(), total);
        QVERIFY(f.model().index(0, TreeModel::ShareColumn).data().toString().isEmpty());
        const QModelIndex bigShare = f.model().index(0, TreeModel::ShareColumn, f.rootIndex());
        QCOMPARE(bigShare.data().toString(),
                 barString(double(f.model().nodeAt(bigShare)->size) / double(c.rootNode->size)));
        QVERIFY(!firstSize.data(Qt::ForegroundRole).isValid());
    }

    // Opened and selected rows keep their state when their level is sorted.
    void sortKeepsOpenRowsAndSelection() {
        WindowFixture f;
        AppController& c = f.c;
        c.openPath(sampleTree());
        // Before any result can have arrived, the rows are in listing order.
        const QModelIndex small = f.childNamed(f.rootIndex(), "small");
        const QModelIndex big = f.childNamed(f.rootIndex(), "big");
        c.outline->expand(small);
        c.outline->expand(big);
        c.outline->setCurrentIndex(small);
        const NodePtr smallNode = f.model().nodeAt(small);
        QVERIFY(f.settled());
        QTRY_COMPARE(f.model().nodeAt(big)->pending, qint64(0));
        QCOMPARE(f.rowNames(f.rootIndex()), (Names{"big", "mid", "small", "tiny"}));
        const QModelIndex smallNow = f.childNamed(f.rootIndex(), "small");
        QCOMPARE(f.model().nodeAt(smallNow), smallNode);
        QCOMPARE(c.outline->currentIndex(), smallNow);
        QVERIFY(c.outline->selectionModel()->isRowSelected(smallNow.row(), smallNow.parent()));
        QVERIFY(c.outline->isExpanded(smallNow));
        QVERIFY(c.outline->isExpanded(f.childNamed(f.rootIndex(), "big")));
        QCOMPARE(f.rowNames(f.childNamed(f.rootIndex(), "big")), (Names{"b1", "b2"}));
    }

    // The selected row is a rounded accent band stopping 3 points short of each side.
    void selectionBand() {
        WindowFixture f;
        AppController& c = f.c;
        c.window->show();
        c.openPath(sampleTree());
        QVERIFY(f.settled());
        const QModelIndex row = f.model().index(1, 0, f.rootIndex());
        c.outline->setCurrentIndex(row);
        const QRect cell = c.outline->visualRect(row);
        const QImage picture = c.outline->viewport()->grab().toImage();
        const int middle = cell.center().y(), width = c.outline->viewport()->width();
        const auto isAccent = [&](int x, int y) {
            const QColor seen = picture.pixelColor(x, y);
            return seen.red() > 230 && seen.green() > 80 && seen.green() < 130 && seen.blue() < 90;
        };
        QVERIFY(!isAccent(1, middle));
        QVERIFY(isAccent(4, middle));
        QVERIFY(isAccent(width - 5, middle));
        QVERIFY(!isAccent(width - 2, middle));
        QVERIFY(!isAccent(10, cell.top())); // 1 point clear above
        QVERIFY(!isAccent(4, c.outline->visualRect(row.siblingAtRow(2)).center().y()));
    }

    void refreshAfterChangesOnDisk_data() {
        QTest::addColumn<QString>("where");
        QTest::newRow("open folder") << "open";
        QTest::newRow("closed folder") << "closed";
        QTest::newRow("root") << "root";
    }
    void refreshAfterChangesOnDisk() {
        QFETCH(QString, where);
        WindowFixture f(where != "closed");
        AppController& c = f.c;
        const QByteArray folder = sampleTree();
        c.openPath(folder);
        QVERIFY(f.settled());
        c.outline->expand(f.childNamed(f.rootIndex(), "big"));
        const NodePtr bigNode = f.model().nodeAt(f.childNamed(f.rootIndex(), "big"));
        QTRY_COMPARE(bigNode->pending, qint64(0));
        if (where == "closed")
            c.outline->collapse(f.childNamed(f.rootIndex(), "big"));
        const QString statusBefore = c.status->text();

        // One file goes, a larger one arrives.
        const QByteArray changed = where == "root" ? folder : join(folder, "big");
        QVERIFY(unlink(join(changed, where == "root" ? "tiny" : "b2").constData()) == 0);
        writeFile(join(changed, "new"), 500000);
        const NodePtr anyChild = where == "root" ? c.rootNode : bigNode->children->front();
        c.refreshParent(anyChild);

        if (where == "root") {
            QVERIFY(c.rootNode != anyChild); // reopened from scratch
            QVERIFY(f.settled());
            QCOMPARE(f.rowNames(f.rootIndex()), (Names{"new", "big", "mid", "small"}));
            return;
        }
        QTRY_COMPARE(bigNode->size, duBytes(join(folder, "big")));
        QTRY_COMPARE(c.rootNode->size, duBytes(folder));
        // A closed folder is not listed again until it is opened.
        QCOMPARE(bool(bigNode->children), where == "open");
        c.outline->expand(f.childNamed(f.rootIndex(), "big"));
        QTRY_COMPARE(bigNode->pending, qint64(0));
        QCOMPARE(f.rowNames(f.childNamed(f.rootIndex(), "big")), (Names{"new", "b1"}));
        QCOMPARE(c.status->text(), statusBefore); // the total line is not redone
    }

    void secondOpenWhileFirstMeasures() {
        WindowFixture f;
        AppController& c = f.c;
        const QByteArray first = tmp.freshFolder();
        for (int i = 0; i < 30; ++i) {
            const QByteArray sub = join(first, "d" + QByteArray::number(i));
            makeDir(sub);
            writeFile(join(sub, "x"), 50000);
        }
        const QByteArray second = sampleTree();
        c.openPath(first);
        const NodePtr oldRoot = c.rootNode;
        c.openPath(second);
        QVERIFY(f.settled());
        // Let every result of the first tree arrive; none may touch the window.
        QTRY_VERIFY_WITH_TIMEOUT(oldRoot.use_count() == 1 && oldRoot->size >= 0, 20000);
        QVERIFY(c.status->text().startsWith(QFile::decodeName(second)));
        QCOMPARE(f.model().nodeAt(f.rootIndex()), c.rootNode);
        QCOMPARE(f.model().rowCount(f.rootIndex()), 4);
    }

    void pathField_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("opened"); // empty: not a folder, the message is shown
        QTest::newRow("tilde") << "~/home-sub"
                               << "BASE/home/home-sub";
        QTest::newRow("trailing blank") << "BASE/home "
                                        << "";
        QTest::newRow("a file") << "BASE/file"
                                << "";
        QTest::newRow("empty") << ""
                               << "";
    }
    void pathField() {
        QFETCH(QString, typed);
        QFETCH(QString, opened);
        const QString folder = QFile::decodeName(tmp.freshFolder());
        makeDir(QFile::encodeName(folder + "/home"));
        makeDir(QFile::encodeName(folder + "/home/home-sub"));
        writeFile(QFile::encodeName(folder + "/file"), 5);
        typed.replace("BASE", folder);
        opened.replace("BASE", folder);
        const QByteArray oldHome = qgetenv("HOME");
        qputenv("HOME", QFile::encodeName(folder + "/home"));

        WindowFixture f;
        AppController& c = f.c;
        c.openPath(QFile::encodeName(folder));
        c.pathField->setText(typed);
        QTest::keyClick(c.pathField, Qt::Key_Return);
        qputenv("HOME", oldHome);
        const QString root = opened.isEmpty() ? folder : opened;
        QCOMPARE(c.rootNode->url, QFile::encodeName(root));
        QCOMPARE(c.pathField->text(), opened.isEmpty() ? typed : opened);
        if (opened.isEmpty())
            QCOMPARE(c.status->text(), "Not a folder: " + typed);
    }

    void drop_data() {
        QTest::addColumn<QStringList>("dropped");
        QTest::addColumn<QString>("opened");
        QTest::newRow("two folders: the first") << QStringList{"one", "two"} << "one";
        QTest::newRow("a file opens as a root") << QStringList{"file"} << "file";
        QTest::newRow("web link then folder") << QStringList{"http://a.org/x", "two"} << "two";
        QTest::newRow("nothing local") << QStringList{"http://a.org/x"} << "";
    }
    void drop() {
        QFETCH(QStringList, dropped);
        QFETCH(QString, opened);
        const QString folder = QFile::decodeName(tmp.freshFolder());
        makeDir(QFile::encodeName(folder + "/one"));
        makeDir(QFile::encodeName(folder + "/two"));
        writeFile(QFile::encodeName(folder + "/file"), 5);
        WindowFixture f;
        f.c.window->show();
        QList<QUrl> urls;
        for (const QString& item : dropped)
            urls << (item.startsWith("http") ? QUrl(item)
                                             : QUrl::fromLocalFile(folder + '/' + item));
        QMimeData data;
        data.setUrls(urls);
        auto* target = static_cast<DropView*>(f.c.window->centralWidget());
        QDragEnterEvent enter({100, 100}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent dropEvent({100, 100}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &dropEvent);
        QCOMPARE(dropEvent.isAccepted(), !opened.isEmpty());
        QCOMPARE(f.c.rootNode ? f.c.rootNode->url : QByteArray(),
                 opened.isEmpty() ? QByteArray() : QFile::encodeName(folder + '/' + opened));
    }

    void upButton() {
        WindowFixture f;
        AppController& c = f.c;
        const QByteArray folder = tmp.freshFolder();
        c.openPath(folder);
        QTest::mouseClick(c.upButton, Qt::LeftButton);
        QCOMPARE(c.rootNode->url, tmp.bytes());

        c.openPath("/");
        QVERIFY(!c.upButton->isEnabled());
        const NodePtr root = c.rootNode;
        c.goUp();
        QCOMPARE(c.rootNode, root);
    }

    void launchArgument_data() {
        QTest::addColumn<QByteArray>("argument");
        QTest::addColumn<bool>("opens");
        QTest::newRow("not UTF-8 folder") << QByteArray("caf\xe9") << true;
        QTest::newRow("file") << QByteArray("file") << false;
        QTest::newRow("missing") << QByteArray("missing") << false;
    }
    void launchArgument() {
        QFETCH(QByteArray, argument);
        QFETCH(bool, opens);
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "caf\xe9"));
        writeFile(join(folder, "file"), 3);
        WindowFixture f;
        f.c.applicationDidFinishLaunching({"sizeloom", join(folder, argument)});
        QCOMPARE(f.c.rootNode ? f.c.rootNode->url : QByteArray(),
                 opens ? join(folder, argument) : QByteArray());
        QCOMPARE(visible(f.c.emptyState), !opens);
    }

    void frameIsKeptBetweenRuns() {
        QRect placed;
        {
            WindowFixture f;
            f.c.window->show();
            f.c.window->setGeometry(40, 50, 700, 480);
            placed = f.c.window->geometry();
            f.c.window->close();
        }
        WindowFixture f;
        QCOMPARE(f.c.window->geometry().size(), placed.size());
    }

    void handedOverItemsOpenTheFirst() {
        const QString folder = QFile::decodeName(tmp.freshFolder());
        makeDir(QFile::encodeName(folder + "/a"));
        WindowFixture f;
        f.c.applicationOpen({});
        QVERIFY(!f.c.rootNode);
        f.c.applicationOpen({QUrl::fromLocalFile(folder + "/a"), QUrl::fromLocalFile(folder)});
        QCOMPARE(f.c.rootNode->url, QFile::encodeName(folder + "/a"));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
