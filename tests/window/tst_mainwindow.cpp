// SPDX-License-Identifier: GPL-2.0-or-later
#include "TempTree.h"
#include "WindowFixture.h"
#include "platform/DirectoryReader.h"
#include "platform/FileUrl.h"
#include "platform/PathInfo.h"
#include "platform/UserDefaults.h"
#include "text/SizeText.h"

#include <QApplication>
#include <QMimeData>
#include <QThread>
#include <thread>

using namespace temptree;

namespace {

bool visible(QWidget* widget) {
    return widget && widget->isVisibleTo(widget->window());
}

using Names = QList<QByteArray>;

// Someone opening the FIFO to read it would block until a writer comes: this watcher
// is that writer, and notes that a reader was there. It stops on every way out.
struct FifoReaderWatch {
    explicit FifoReaderWatch(const QByteArray& fifo)
        : watcher([this, fifo](std::stop_token stop) {
              for (; !stop.stop_requested(); QThread::msleep(20))
                  if (const int fd = open(fifo.constData(), O_WRONLY | O_NONBLOCK); fd >= 0) {
                      wasRead = true;
                      close(fd);
                  }
          }) {}
    // Whether anyone opened the FIFO for reading.
    bool stop() {
        watcher.request_stop();
        watcher.join();
        return wasRead;
    }
    std::atomic<bool> wasRead{false};
    std::jthread watcher;
};

// What of a widget has been painted again.
struct PaintedRegion : QObject {
    explicit PaintedRegion(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
    QRegion region;
};

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
    static void checkFace(WindowFixture& c, bool browsing) {
        const auto named = [&c](const char* name) {
            return c.window->findChild<QWidget*>(QLatin1String(name));
        };
        for (QWidget* view :
             {named("topBar"), static_cast<QWidget*>(c.outline), static_cast<QWidget*>(c.status)})
            QCOMPARE(visible(view), browsing);
        QCOMPARE(visible(named("emptyState")), !browsing);
        QCOMPARE(visible(named("credit")), !browsing);
        QVERIFY(visible(&c.window->volumes()));
        QCOMPARE(c.upButton->isEnabled(), browsing);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    // The empty face at launch; then opening: both forms of the status line, unknown
    // then known cells, and the level sorted with its open and selected rows kept, the
    // selection drawn as a band; then up to the folder above.
    void openSortSelectAndGoUp() {
        WindowFixture f;
        WindowFixture& c = f;
        checkFace(c, false);
        QCOMPARE(c.status->text(), t("status_initial"));
        QCOMPARE(c.window->findChild<QLabel*>("emptyTitle")->text(), QString("Drop a folder here"));
        QCOMPARE(f.model().rowCount(), 0);
        c.window->show();
        const QByteArray folder = sampleTree();
        const QString path = QFile::decodeName(folder);
        c.openPath(folder);
        checkFace(c, true);
        QCOMPARE(c.pathField->text(), path);
        QCOMPARE(c.status->text(),
                 path + QString::fromUtf8("  ·  Measuring…  0 items  ·  0 B so far"));
        // Nothing is applied before the event loop runs: the root's size is unknown and
        // it has no rows yet.
        const QModelIndex rootSize = f.model().index(0, TreeModel::SizeColumn);
        QCOMPARE(rootSize.data().toString(), QString::fromUtf8("Calculating…"));
        QVERIFY(rootSize.data(Qt::ForegroundRole).isValid());
        QCOMPARE(f.model().rowCount(f.rootIndex()), 0);
        // As the rows arrive, in listing order and before the level is sorted, two are
        // opened and one selected, as a person might (once the insertion is over: opening
        // a folder inserts its rows).
        EntryId big = kNoEntry;
        QMetaObject::Connection arriving;
        arriving = connect(
            &f.model(), &QAbstractItemModel::rowsInserted, this,
            [&] {
                const QModelIndex smallRow = f.childNamed(f.rootIndex(), "small");
                const QModelIndex bigRow = f.childNamed(f.rootIndex(), "big");
                if (!smallRow.isValid() || !bigRow.isValid())
                    return;
                disconnect(arriving);
                c.outline->expand(smallRow);
                c.outline->expand(bigRow);
                c.outline->setCurrentIndex(smallRow);
                big = f.entryAt(bigRow);
            },
            Qt::QueuedConnection);
        QTRY_VERIFY(big != kNoEntry);

        QVERIFY(f.settled());
        QVERIFY(f.listed(big));
        const QString total = humanSize(duBytes(folder));
        QVERIFY(c.status->text().startsWith(path + QString::fromUtf8("  ·  4 items  ·  Total ") +
                                            total + QString::fromUtf8("  ·  measured at ")));
        QCOMPARE(f.rowNames(f.rootIndex()), (Names{"big", "mid", "small", "tiny"}));
        QCOMPARE(f.rowNames(f.childNamed(f.rootIndex(), "big")), (Names{"b1", "b2"}));
        QCOMPARE(f.model().index(0, TreeModel::SizeColumn).data().toString(), total);
        QVERIFY(f.model().index(0, TreeModel::ShareColumn).data().toString().isEmpty());
        const QModelIndex bigShare = f.model().index(0, TreeModel::ShareColumn, f.rootIndex());
        QCOMPARE(bigShare.data().toString(), barString(double(f.index().allocated(big)) /
                                                       double(f.index().allocated(f.rootId()))));
        QVERIFY(
            !bigShare.siblingAtColumn(TreeModel::SizeColumn).data(Qt::ForegroundRole).isValid());
        const QModelIndex small = f.childNamed(f.rootIndex(), "small");
        QCOMPARE(c.outline->currentIndex(), small);
        QVERIFY(c.outline->selectionModel()->isRowSelected(small.row(), small.parent()));
        QVERIFY(c.outline->isExpanded(small) &&
                c.outline->isExpanded(f.childNamed(f.rootIndex(), "big")));

        // The band is accent-coloured and stops 3 points short of each side.
        const QImage picture = c.outline->viewport()->grab().toImage();
        const QRect cell = c.outline->visualRect(small);
        // The picture's own width: a scroll bar coming meanwhile narrows the viewport.
        const int middle = cell.center().y(), width = picture.width();
        const auto isAccent = [&](int x, int y) {
            const QColor seen = picture.pixelColor(x, y);
            return seen.red() > 230 && seen.green() > 80 && seen.green() < 130 && seen.blue() < 90;
        };
        QVERIFY(!isAccent(1, middle) && isAccent(4, middle));
        // At the right end the share column's bar may lie on the band, lighter.
        const auto onBand = [&](int x) {
            const QColor seen = picture.pixelColor(x, middle);
            return seen.red() > 230 && seen.green() < 170 && seen.blue() < 120;
        };
        QVERIFY(onBand(width - 5) && !onBand(width - 2));
        QVERIFY(!isAccent(10, cell.top())); // 1 point clear above
        QVERIFY(
            !isAccent(4, c.outline->visualRect(f.childNamed(f.rootIndex(), "mid")).center().y()));

        // The up button opens the folder above; "/" has none.
        QTest::mouseClick(c.upButton, Qt::LeftButton);
        QCOMPARE(c.rootPath(), tmp.bytes());
        c.openPath("/");
        QVERIFY(!c.upButton->isEnabled());
        QTest::mouseClick(c.upButton, Qt::LeftButton);
        QCOMPARE(c.rootPath(), QByteArray("/"));
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
        WindowFixture& c = f;
        const QByteArray folder = sampleTree();
        QVERIFY(f.openAt(folder));
        QVERIFY(f.openRow(f.childNamed(f.rootIndex(), "big")));
        const EntryId bigNode = f.entryAt(f.childNamed(f.rootIndex(), "big"));
        if (where == "closed")
            c.outline->collapse(f.childNamed(f.rootIndex(), "big"));
        const QString statusBefore = c.status->text();

        // One file goes, a larger one arrives.
        const QByteArray changed = where == "root" ? folder : join(folder, "big");
        QVERIFY(unlink(join(changed, where == "root" ? "tiny" : "b2").constData()) == 0);
        writeFile(join(changed, "new"), 500000);
        const ItemRef anyChild =
            where == "root" ? f.itemAt(f.rootIndex())
                            : f.itemAt(f.model().index(0, 0, f.childNamed(f.rootIndex(), "big")));
        const std::shared_ptr<SizeIndex> indexBefore = c.tree.index();
        c.tree.refreshParent(anyChild);

        if (where == "root") {
            QVERIFY(c.tree.index() != indexBefore); // walked again from scratch
            QVERIFY(f.settled());
            QCOMPARE(f.rowNames(f.rootIndex()), (Names{"new", "big", "mid", "small"}));
            return;
        }
        QVERIFY(f.listed(bigNode));
        QTRY_COMPARE(f.index().allocated(bigNode), duBytes(join(folder, "big")));
        QTRY_COMPARE(f.index().allocated(f.rootId()), duBytes(folder));
        c.outline->expand(f.childNamed(f.rootIndex(), "big"));
        QTRY_COMPARE(f.rowNames(f.childNamed(f.rootIndex(), "big")), (Names{"new", "b1"}));
        QCOMPARE(c.status->text(), statusBefore); // the total line is not redone
    }

    // Views and proxies may fetch any folder they can while the model announces a
    // change; a fetch of the folder being changed must not change its rows again.
    void fetchWhileRowsChange_data() {
        QTest::addColumn<bool>("dropped");
        QTest::newRow("listed rows shown") << false;
        QTest::newRow("shown rows dropped") << true;
    }
    void fetchWhileRowsChange() {
        QFETCH(bool, dropped);
        WindowFixture f(false);
        WindowFixture& c = f;
        QVERIFY(f.openAt(sampleTree()));
        const QModelIndex big = f.childNamed(f.rootIndex(), "big");
        const EntryId bigNode = f.entryAt(big);
        if (dropped)
            f.model().fetchMore(big);
        QVERIFY(f.listed(bigNode));
        int announced = f.model().rowCount(big);
        const auto fetchAll = [&](const QModelIndex& parent) {
            if (f.model().canFetchMore(parent))
                f.model().fetchMore(parent);
        };
        const auto count = [&](int delta) {
            announced += delta;
            QCOMPARE(f.model().rowCount(big), announced);
        };
        TreeModel& m = f.model();
        QObject::connect(&m, &QAbstractItemModel::rowsAboutToBeInserted, &m, fetchAll);
        QObject::connect(&m, &QAbstractItemModel::rowsAboutToBeRemoved, &m, fetchAll);
        QObject::connect(&m, &QAbstractItemModel::rowsInserted, &m,
                         [&](const QModelIndex&, int first, int last) { count(last - first + 1); });
        QObject::connect(&m, &QAbstractItemModel::rowsRemoved, &m,
                         [&](const QModelIndex&, int first, int last) { count(first - last - 1); });
        if (dropped)
            c.tree.refreshParent(f.itemAt(f.model().index(0, 0, big)));
        else
            f.model().fetchMore(big);
        fetchAll(big); // what an opened row does once the change is over
        QVERIFY(f.listed(bigNode));
        QTRY_COMPARE(f.model().rowCount(big), 2);
        QCOMPARE(announced, 2);
    }

    // A folder typed into the path field, handed in by a drop, as the launch argument or
    // by the desktop. What was open before stays open when the item is no folder.
    void folderHandedIn_data() {
        QTest::addColumn<QString>("way");
        QTest::addColumn<QByteArrayList>("items");
        QTest::addColumn<QByteArray>("opened"); // empty: nothing opened
        QTest::addColumn<bool>("refused");      // "Not a folder" is shown
        using L = QByteArrayList;
        const QByteArray none;
        QTest::newRow("typed with a tilde") << "typed" << L{"~/one"} << QByteArray("one") << false;
        // Blanks belong to the path: a trailing blank is a different name.
        QTest::newRow("typed with a trailing blank") << "typed" << L{"one "} << none << true;
        QTest::newRow("typed empty") << "typed" << L{""} << none << true;
        QTest::newRow("drop of two folders")
            << "drop" << L{"one", "two"} << QByteArray("one") << false;
        QTest::newRow("drop of a file") << "drop" << L{"file"} << none << true;
        QTest::newRow("drop of a link, a folder")
            << "drop" << L{"http://a.org/x", "two"} << QByteArray("two") << false;
        QTest::newRow("drop of nothing local") << "drop" << L{"http://a.org/x"} << none << false;
        QTest::newRow("launch on a folder")
            << "launch" << L{"caf\xe9"} << QByteArray("caf\xe9") << false;
        QTest::newRow("launch on nothing there") << "launch" << L{"missing"} << none << true;
        QTest::newRow("desktop hands over nothing") << "desktop" << L{} << none << false;
        QTest::newRow("desktop hands over two")
            << "desktop" << L{"one", "two"} << QByteArray("one") << false;
        QTest::newRow("desktop hands over a file") << "desktop" << L{"file"} << none << true;
        // As the path of "file:-x" reads: relative, and an option to whatever takes it.
        QTest::newRow("desktop hands over a relative path")
            << "desktop" << L{"file:-x"} << none << true;
    }
    void folderHandedIn() {
        QFETCH(QString, way);
        QFETCH(QByteArrayList, items);
        QFETCH(QByteArray, opened);
        QFETCH(bool, refused);
        const QByteArray folder = tmp.freshFolder();
        for (const char* name : {"one", "two", "caf\xe9"})
            makeDir(join(folder, name));
        writeFile(join(folder, "file"), 5);
        QList<QUrl> urls;
        for (const QByteArray& item : items)
            urls << (item.contains(':')
                         ? QUrl(QString::fromUtf8(item))
                         : QUrl::fromLocalFile(QFile::decodeName(join(folder, item))));
        const QByteArray before = join(folder, "two");
        WindowFixture f;
        f.window->show();
        f.openPath(before);
        if (way == "typed") {
            const QByteArray item = items[0], home = qgetenv("HOME");
            qputenv("HOME", folder);
            f.pathField->setText(item.startsWith('~') || item.isEmpty()
                                     ? QString::fromUtf8(item)
                                     : QFile::decodeName(join(folder, item)));
            QTest::keyClick(f.pathField, Qt::Key_Return);
            qputenv("HOME", home);
        } else if (way == "launch") {
            f.window->openHandedPath(join(folder, items[0]));
        } else if (way == "desktop") {
            // What the desktop hands over: the first item, as the program's shell takes it.
            if (!urls.isEmpty())
                f.window->openHandedPath(localPathBytes(urls.first()));
        } else {
            QMimeData data;
            data.setUrls(urls);
            QDragEnterEvent enter({100, 100}, Qt::CopyAction, &data, Qt::LeftButton,
                                  Qt::NoModifier);
            QApplication::sendEvent(f.window->centralWidget(), &enter);
            QVERIFY(enter.isAccepted());
            QDropEvent drop({100, 100}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(f.window->centralWidget(), &drop);
            QCOMPARE(drop.isAccepted(), urls.constLast().isLocalFile());
        }
        QCOMPARE(f.rootPath(), opened.isEmpty() ? before : join(folder, opened));
        QCOMPARE(f.status->text().startsWith(t("not_a_folder")), refused);
    }

    // A folder whose name is markup is shown as its name: the status line neither
    // restyles it as a heading nor loads the image it names (a FIFO here, which would
    // block for good). A name holds no "/", so no closing tags; rich text does without.
    void markupNameShownAsText() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray fifo = join(folder, "fifo");
        QVERIFY(mkfifo(fifo.constData(), 0600) == 0);
        const QByteArray marked =
            join(folder,
                 "<h1>Heading<img src=" + QUrl::toPercentEncoding(QFile::decodeName(fifo)) + ">");
        makeDir(marked);

        FifoReaderWatch watch(fifo);
        WindowFixture f;
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window));
        f.openPath(marked);
        QVERIFY(f.settled());
        f.window->grab();
        QLabel reference;
        reference.setTextFormat(Qt::PlainText);
        reference.setFont(f.status->font());
        reference.setText(f.status->text());
        QVERIFY(f.status->text().startsWith(QFile::decodeName(marked)));
        QCOMPARE(f.status->sizeHint(), reference.sizeHint());
        QVERIFY(!watch.stop());
    }

    // A whole large level changes at once when its folder's total comes in: what is on
    // screen is painted again.
    void largeLevelRepaintedAsAWhole() {
        WindowFixture f(false);
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 600; ++i)
            writeFile(join(folder, "f" + QByteArray::number(i)), 0);
        QVERIFY(f.openAt(folder));
        QVERIFY(QTest::qWaitForWindowExposed(f.window));
        PaintedRegion painted(f.outline->viewport());
        QTest::qWait(100);
        painted.region = {};
        f.model().redrawRowAndChildren(f.rootId());
        const QRect lastRowOnScreen = f.outline->visualRect(
            f.outline->indexAt(f.outline->viewport()->rect().bottomLeft() - QPoint(0, 2)));
        QVERIFY(!lastRowOnScreen.isEmpty());
        QTRY_VERIFY(painted.region.contains(lastRowOnScreen));
    }

    // Drilling down the largest child, level after level, reads no folder: each level
    // comes from the index, sized as du sizes it and in order.
    void drillDownFromTheIndex() {
        const QByteArray top = tmp.freshFolder();
        QByteArray level = top;
        for (int depth = 0; depth < 4; ++depth) {
            for (int i = 0; i < 3; ++i) {
                makeDir(join(level, "side" + QByteArray::number(i)));
                writeFile(join(level, "side" + QByteArray::number(i) + "/f"), 5000 * (i + 1));
            }
            writeFile(join(level, "file"), 3000);
            level = join(level, "main");
            makeDir(level);
            writeFile(join(level, "big"), 200000);
        }
        WindowFixture f;
        QVERIFY(f.openAt(top));
        const quint64 readsBefore = DirectoryReader::foldersRead();
        QModelIndex at = f.rootIndex();
        for (QByteArray path = join(top, "main"); isExistingDirectory(path);
             path = join(path, "main")) {
            at = f.model().index(0, 0, at);
            QCOMPARE(f.itemAt(at).path, path);
            QCOMPARE(at.siblingAtColumn(TreeModel::SizeColumn).data().toString(),
                     humanSize(duBytes(path)));
            QVERIFY(f.openRow(at));
        }
        QCOMPARE(DirectoryReader::foldersRead(), readsBefore);
    }

    // A folder of more entries than a page shows its largest first, a page of them, and
    // the rest as the outline is scrolled to its end.
    void hugeLevelComesInPages() {
        WindowFixture f(false);
        const QByteArray folder = tmp.freshFolder();
        const int files = int(TreeModel::kRowsPerPage) + 300;
        for (int i = 0; i < files; ++i)
            writeFile(join(folder, "f" + QByteArray::number(i)), i % 997 == 0 ? 9000 : 0);
        QVERIFY(f.openAt(folder));
        QCOMPARE(f.model().rowCount(f.rootIndex()), int(TreeModel::kRowsPerPage));
        // The files with data, wherever they were listed, come first.
        const int withData = (files + 996) / 997;
        QVERIFY(f.index().allocated(f.entryAt(f.model().index(withData - 1, 0, f.rootIndex()))) >
                0);
        QVERIFY(f.model().hasMoreRows(f.rootIndex()));
        f.outline->scrollToBottom();
        QTRY_COMPARE(f.model().rowCount(f.rootIndex()), files);
        QVERIFY(f.inOrder(f.rootId()));
        QVERIFY(!f.model().hasMoreRows(f.rootIndex()));
    }

    // The frame of the last run comes back. The settings file is the person's to edit,
    // or anyone's to craft: a frame that no screen can show is not taken.
    void frameFromTheLastRun_data() {
        QTest::addColumn<QRect>("saved");
        QTest::addColumn<bool>("crafted"); // else saved by the window as it closed
        QTest::addColumn<bool>("taken");
        QTest::newRow("kept from the last run") << QRect(40, 50, 700, 480) << false << true;
        QTest::newRow("huge") << QRect(0, 0, 32767, 32767) << true << false;
        // Its size is kept, and it is brought back where a screen shows it.
        QTest::newRow("off every screen") << QRect(-5000, -5000, 600, 400) << true << true;
    }
    void frameFromTheLastRun() {
        QFETCH(QRect, saved);
        QFETCH(bool, crafted);
        QFETCH(bool, taken);
        userDefaults()->clear();
        if (crafted) {
            QWidget widget;
            widget.setGeometry(saved);
            userDefaults()->setValue("SizeloomMain", widget.saveGeometry());
        } else {
            WindowFixture f;
            f.window->show();
            f.window->setGeometry(saved);
            saved = f.window->geometry();
            f.window->close();
        }
        WindowFixture f;
        const QRect shown = f.window->geometry();
        QCOMPARE(shown.size(), taken ? saved.size() : QSize(820, 600));
        QVERIFY(!taken || QGuiApplication::primaryScreen()->availableGeometry().contains(shown));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
