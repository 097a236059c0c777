#include "TempTree.h"
#include "WindowFixture.h"
#include "text/SizeText.h"
#include "text/StatusLine.h"
#include "ui/DropView.h"

#include <QApplication>
#include <QMimeData>

using namespace temptree;

namespace {

bool visible(QWidget* widget) {
    return widget && widget->isVisibleTo(widget->window());
}

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT
    temptree::Dir tmp;
    QByteArray base;

    // big (folder, 400 KB), mid (file, 200 KB), small (folder, 20 KB), tiny (file).
    QByteArray sampleTree() {
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "small"));
        writeFile(join(join(folder, "small"), "s"), 20000);
        writeFile(join(folder, "tiny"), 10);
        makeDir(join(folder, "big"));
        writeFile(join(join(folder, "big"), "b1"), 250000);
        writeFile(join(join(folder, "big"), "b2"), 150000);
        writeFile(join(folder, "mid"), 200000);
        return folder;
    }

    void saveShot(QWidget* window, const char* name) {
        const QByteArray dir = qgetenv("SIZELOOM_SCREENSHOTS");
        if (!dir.isEmpty())
            window->grab().save(QFile::decodeName(dir) + '/' + name + ".png");
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        base = tmp.bytes();
    }

    void emptyFaceAtLaunch() {
        WindowFixture f;
        AppController& c = f.c();
        QCOMPARE(c.window->windowTitle(), QString("Sizeloom"));
        QVERIFY(!visible(c.topBar));
        QVERIFY(!visible(c.scroll));
        QVERIFY(!visible(c.status));
        QVERIFY(visible(c.emptyState));
        QVERIFY(visible(c.credit));
        QVERIFY(visible(c.volumesPanel));
        QVERIFY(!c.upButton->isEnabled());
        QCOMPARE(c.status->text(), t("status_initial"));
        QCOMPARE(c.emptyTitle->text(), QString("Drop a folder here"));
        QCOMPARE(c.model->rowCount(), 0);
        saveShot(c.window, "empty");
    }

    void openShowsTheFolderAndItsTotal() {
        WindowFixture f;
        AppController& c = f.c();
        const QByteArray folder = sampleTree();
        c.openPath(folder);
        QVERIFY(visible(c.topBar));
        QVERIFY(visible(c.scroll));
        QVERIFY(visible(c.status));
        QVERIFY(!visible(c.emptyState));
        QVERIFY(!visible(c.credit));
        QVERIFY(visible(c.volumesPanel));
        QVERIFY(c.upButton->isEnabled());
        QCOMPARE(c.pathField->text(), QFile::decodeName(folder));
        QCOMPARE(c.status->text(),
                 QFile::decodeName(folder) + QString::fromUtf8("  ·  Calculating…"));
        QVERIFY(c.outline->isExpanded(f.rootIndex()));
        QCOMPARE(c.model->rowCount(f.rootIndex()), 4);

        QTRY_VERIFY(f.rootTotalShown());
        const QString expected = QFile::decodeName(folder) +
                                 QString::fromUtf8("  ·  4 items  ·  Total ") +
                                 humanSize(duBytes(folder));
        QCOMPARE(c.status->text(), expected);
        QTRY_COMPARE(c.rootNode->pending, qint64(0));
        QCOMPARE(f.rowNames(f.rootIndex()), (QList<QByteArray>{"big", "mid", "small", "tiny"}));
        const QModelIndex rootSize = c.model->index(0, TreeModel::SizeColumn);
        QCOMPARE(rootSize.data().toString(), humanSize(duBytes(folder)));
        QVERIFY(c.model->index(0, TreeModel::ShareColumn).data().toString().isEmpty());
        saveShot(c.window, "browsing");
    }

    // Opened and selected rows keep their state when their level is sorted.
    void sortKeepsOpenRowsAndSelection() {
        WindowFixture f;
        AppController& c = f.c();
        const QByteArray folder = sampleTree();
        c.openPath(folder);
        // Before any result can have arrived, the rows are in listing order.
        const QModelIndex small = f.childNamed(f.rootIndex(), "small");
        const QModelIndex big = f.childNamed(f.rootIndex(), "big");
        c.outline->expand(small);
        c.outline->expand(big);
        c.outline->setCurrentIndex(small);
        const NodePtr smallNode = c.model->nodeAt(small);
        QTRY_COMPARE(c.rootNode->pending, qint64(0));
        QTRY_COMPARE(c.model->nodeAt(big)->pending, qint64(0));
        QCOMPARE(f.rowNames(f.rootIndex()), (QList<QByteArray>{"big", "mid", "small", "tiny"}));
        const QModelIndex smallNow = f.childNamed(f.rootIndex(), "small");
        QCOMPARE(c.outline->currentIndex(), smallNow);
        QVERIFY(c.outline->selectionModel()->isRowSelected(smallNow.row(), smallNow.parent()));
        QVERIFY(c.outline->isExpanded(smallNow));
        QVERIFY(c.outline->isExpanded(f.childNamed(f.rootIndex(), "big")));
        QCOMPARE(c.model->nodeAt(smallNow), smallNode);
        QCOMPARE(f.rowNames(f.childNamed(f.rootIndex(), "big")), (QList<QByteArray>{"b1", "b2"}));
    }

    // The selected row is a rounded accent band stopping 3 points short of each side.
    void selectionBand() {
        WindowFixture f;
        AppController& c = f.c();
        c.window->show();
        c.openPath(sampleTree());
        QTRY_COMPARE(c.rootNode->pending, qint64(0));
        const QModelIndex row = c.model->index(1, 0, f.rootIndex());
        c.outline->setCurrentIndex(row);
        const QRect cell = c.outline->visualRect(row);
        const QImage picture = c.outline->viewport()->grab().toImage();
        const int middle = cell.center().y();
        const auto isAccent = [&](int x, int y) {
            const QColor seen = picture.pixelColor(x, y);
            return seen.red() > 230 && seen.green() > 80 && seen.green() < 130 && seen.blue() < 90;
        };
        QVERIFY(!isAccent(1, middle));
        QVERIFY(isAccent(4, middle));
        QVERIFY(isAccent(c.outline->viewport()->width() - 5, middle));
        QVERIFY(!isAccent(c.outline->viewport()->width() - 2, middle));
        QVERIFY(!isAccent(10, cell.top())); // 1 point clear above
        const QModelIndex other = c.model->index(2, 0, f.rootIndex());
        QVERIFY(!isAccent(4, c.outline->visualRect(other).center().y()));
        saveShot(c.window, "selected");
    }

    void cellsOfUnknownAndKnownSizes() {
        WindowFixture f;
        AppController& c = f.c();
        const QByteArray folder = sampleTree();
        c.openPath(folder);
        const QModelIndex first = c.model->index(0, TreeModel::SizeColumn, f.rootIndex());
        // Nothing is applied before the event loop runs: every size is still unknown.
        QCOMPARE(first.data().toString(), QString::fromUtf8("Calculating…"));
        QVERIFY(first.data(Qt::ForegroundRole).isValid());
        QVERIFY(
            c.model->index(0, TreeModel::ShareColumn, f.rootIndex()).data().toString().isEmpty());
        QTRY_VERIFY(f.rootTotalShown());
        QTRY_COMPARE(c.rootNode->pending, qint64(0));
        const QModelIndex bigShare = c.model->index(0, TreeModel::ShareColumn, f.rootIndex());
        const NodePtr bigNode = c.model->nodeAt(bigShare);
        QCOMPARE(bigShare.data().toString(),
                 barString(double(bigNode->size) / double(c.rootNode->size)));
        QVERIFY(!c.model->index(0, TreeModel::SizeColumn, f.rootIndex())
                     .data(Qt::ForegroundRole)
                     .isValid());
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
        AppController& c = f.c();
        const QByteArray folder = sampleTree();
        c.openPath(folder);
        QTRY_VERIFY(f.rootTotalShown());
        QTRY_COMPARE(c.rootNode->pending, qint64(0));
        QModelIndex big = f.childNamed(f.rootIndex(), "big");
        c.outline->expand(big);
        const NodePtr bigNode = c.model->nodeAt(big);
        QTRY_COMPARE(bigNode->pending, qint64(0));
        if (where == "closed")
            c.outline->collapse(big);
        const QString statusBefore = c.status->text();

        // One file goes, a larger one arrives.
        const QByteArray changed = where == "root" ? folder : join(folder, "big");
        QVERIFY(unlink(join(changed, where == "root" ? "tiny" : "b2").constData()) == 0);
        writeFile(join(changed, "new"), 500000);
        const NodePtr anyChild = where == "root" ? c.rootNode : bigNode->children->front();
        c.refreshParent(anyChild);

        if (where == "root") {
            QVERIFY(c.rootNode != anyChild); // reopened from scratch
            QTRY_VERIFY(f.rootTotalShown());
            QTRY_COMPARE(c.rootNode->pending, qint64(0));
            QCOMPARE(f.rowNames(f.rootIndex()), (QList<QByteArray>{"new", "big", "mid", "small"}));
            return;
        }
        QTRY_COMPARE(bigNode->size, duBytes(join(folder, "big")));
        QTRY_COMPARE(c.rootNode->size, duBytes(folder));
        if (where == "closed") {
            // Not listed again until the folder is opened.
            QVERIFY(!bigNode->children);
            c.outline->expand(f.childNamed(f.rootIndex(), "big"));
        }
        big = f.childNamed(f.rootIndex(), "big");
        QVERIFY(bigNode->children);
        QTRY_COMPARE(bigNode->pending, qint64(0));
        QCOMPARE(f.rowNames(big), (QList<QByteArray>{"new", "b1"}));
        QCOMPARE(c.status->text(), statusBefore); // the total line is not redone
    }

    void secondOpenWhileFirstMeasures() {
        WindowFixture f;
        AppController& c = f.c();
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
        QTRY_VERIFY(f.rootTotalShown());
        QVERIFY(c.status->text().startsWith(QFile::decodeName(second)));
        // Let every result of the first tree arrive; none may touch the window.
        QTRY_VERIFY_WITH_TIMEOUT(oldRoot.use_count() == 1 && oldRoot->size >= 0, 20000);
        QVERIFY(c.status->text().startsWith(QFile::decodeName(second)));
        QCOMPARE(c.model->nodeAt(f.rootIndex()), c.rootNode);
        QCOMPARE(c.model->rowCount(f.rootIndex()), 4);
    }

    void pathField_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("opened"); // empty: not a folder
        QTest::addColumn<QString>("message");
        QTest::newRow("tilde") << "~/home-sub"
                               << "HOME/home-sub"
                               << "";
        QTest::newRow("trailing blank") << "BASE/plain "
                                        << ""
                                        << "Not a folder: BASE/plain ";
        QTest::newRow("a file") << "BASE/file"
                                << ""
                                << "Not a folder: BASE/file";
        QTest::newRow("empty") << ""
                               << ""
                               << "Not a folder: ";
        QTest::newRow("plain folder") << "BASE/plain"
                                      << "BASE/plain"
                                      << "";
    }
    void pathField() {
        QFETCH(QString, typed);
        QFETCH(QString, opened);
        QFETCH(QString, message);
        const QString folder = QFile::decodeName(tmp.freshFolder());
        const QString home = folder + "/home";
        makeDir(QFile::encodeName(home));
        makeDir(QFile::encodeName(home + "/home-sub"));
        makeDir(QFile::encodeName(folder + "/plain"));
        writeFile(QFile::encodeName(folder + "/file"), 5);
        const QByteArray oldHome = qgetenv("HOME");
        qputenv("HOME", QFile::encodeName(home));
        const auto expand = [&](QString text) {
            return text.replace("HOME", home).replace("BASE", folder);
        };

        WindowFixture f;
        AppController& c = f.c();
        c.openPath(QFile::encodeName(folder));
        c.pathField->setText(expand(typed));
        QTest::keyClick(c.pathField, Qt::Key_Return);
        qputenv("HOME", oldHome);
        if (opened.isEmpty()) {
            QCOMPARE(c.status->text(), expand(message));
            QCOMPARE(c.rootNode->url, QFile::encodeName(folder)); // nothing else changed
            QCOMPARE(c.pathField->text(), expand(typed));
        } else {
            QCOMPARE(c.rootNode->url, QFile::encodeName(expand(opened)));
            QCOMPARE(c.pathField->text(), expand(opened));
        }
    }

    void drop_data() {
        QTest::addColumn<QStringList>("dropped");
        QTest::addColumn<QString>("opened");
        QTest::newRow("two folders: the first") << QStringList{"one", "two"} << "one";
        QTest::newRow("a file opens as a root") << QStringList{"file"} << "file";
        QTest::newRow("web link then folder")
            << QStringList{"http://example.org/x", "two"} << "two";
        QTest::newRow("nothing local") << QStringList{"http://example.org/x"} << "";
    }
    void drop() {
        QFETCH(QStringList, dropped);
        QFETCH(QString, opened);
        const QString folder = QFile::decodeName(tmp.freshFolder());
        makeDir(QFile::encodeName(folder + "/one"));
        makeDir(QFile::encodeName(folder + "/two"));
        writeFile(QFile::encodeName(folder + "/file"), 5);
        WindowFixture f;
        AppController& c = f.c();
        c.window->show();
        QList<QUrl> urls;
        for (const QString& item : dropped)
            urls << (item.startsWith("http") ? QUrl(item)
                                             : QUrl::fromLocalFile(folder + '/' + item));
        QMimeData data;
        data.setUrls(urls);
        auto* target = static_cast<DropView*>(c.window->centralWidget());
        const QPoint at(100, 100);
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent dropEvent(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &dropEvent);
        QCOMPARE(dropEvent.isAccepted(), !opened.isEmpty());
        if (opened.isEmpty()) {
            QVERIFY(!c.rootNode);
            return;
        }
        QCOMPARE(c.rootNode->url, QFile::encodeName(folder + '/' + opened));
        QVERIFY(c.rootNode->isDir);
    }

    void upButton() {
        WindowFixture f;
        AppController& c = f.c();
        const QByteArray folder = tmp.freshFolder();
        c.openPath(join(folder, ""));
        c.openPath(folder);
        QVERIFY(c.upButton->isEnabled());
        QTest::mouseClick(c.upButton, Qt::LeftButton);
        QCOMPARE(c.rootNode->url, base);

        c.openPath("/");
        QVERIFY(!c.upButton->isEnabled());
        const NodePtr root = c.rootNode;
        c.goUp();
        QCOMPARE(c.rootNode, root);
    }

    void launchArgument_data() {
        QTest::addColumn<QByteArray>("argument");
        QTest::addColumn<bool>("opens");
        QTest::newRow("folder") << QByteArray("sub") << true;
        QTest::newRow("not UTF-8 folder") << QByteArray("caf\xe9") << true;
        QTest::newRow("file") << QByteArray("file") << false;
        QTest::newRow("missing") << QByteArray("missing") << false;
    }
    void launchArgument() {
        QFETCH(QByteArray, argument);
        QFETCH(bool, opens);
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "sub"));
        makeDir(join(folder, "caf\xe9"));
        writeFile(join(folder, "file"), 3);
        WindowFixture f;
        AppController& c = f.c();
        c.applicationDidFinishLaunching({"sizeloom", join(folder, argument)});
        QCOMPARE(bool(c.rootNode), opens);
        QCOMPARE(visible(c.emptyState), !opens);
        if (opens) {
            QCOMPARE(c.rootNode->url, join(folder, argument));
            QTRY_VERIFY(f.rootTotalShown());
        }
    }

    void frameIsKeptBetweenRuns()
    {
        QRect placed;
        {
            WindowFixture f;
            f.c().window->show();
            f.c().window->setGeometry(40, 50, 700, 480);
            placed = f.c().window->geometry();
            f.c().window->close();
        }
        WindowFixture f;
        QCOMPARE(f.c().window->geometry().size(), placed.size());
    }

    void handedOverItemsOpenTheFirst() {
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "a"));
        makeDir(join(folder, "b"));
        WindowFixture f;
        AppController& c = f.c();
        c.applicationOpen({});
        QVERIFY(!c.rootNode);
        c.applicationOpen({QUrl::fromLocalFile(QFile::decodeName(join(folder, "a"))),
                           QUrl::fromLocalFile(QFile::decodeName(join(folder, "b")))});
        QCOMPARE(c.rootNode->url, join(folder, "a"));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
