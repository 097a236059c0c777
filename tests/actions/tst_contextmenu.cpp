// SPDX-License-Identifier: GPL-2.0-or-later
// The outline's right-click menu: which row it is for, what it holds, in which
// language, and what a right-click or the keyboard leaves selected.
#include "MenuProbe.h"
#include "ModalDriver.h"
#include "TempTree.h"
#include "actions/PreviewWindow.h"
#include "actions/PropertiesWindow.h"

#include <QAccessible>
#include <QClipboard>
#include <QPointer>
#include <QScrollBar>
#include <unistd.h>

using namespace temptree;
using namespace menuprobe;

namespace {

const QStringList kEnglishMenu{"Show in File Manager",
                               "Quick Look",
                               "Get Info",
                               "-",
                               "Rename…",
                               "Duplicate",
                               "Move to Trash",
                               "-",
                               "Copy",
                               "Copy Path",
                               "Share…",
                               "-",
                               "Compress"};

QModelIndexList selectedRows(WindowFixture& c) {
    return c.outline->selectionModel()->selectedRows();
}

} // namespace

class TestContextMenu : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray folder;

    // file.txt, sub/ (with two files), link -> file.txt, a name that is not UTF-8, and
    // a name with an ampersand.
    QByteArray sampleTree() {
        const QByteArray root = tmp.freshFolder();
        writeFile(join(root, "file.txt"), 3000);
        makeDir(join(root, "sub"));
        writeFile(join(root, "sub/one"), 100);
        writeFile(join(root, "sub/two"), 200);
        if (symlink("file.txt", join(root, "link").constData()) != 0)
            qFatal("cannot make a link");
        writeFile(join(root, "caf\xe9"), 10);
        writeFile(join(root, "salt & pepper"), 10);
        return root;
    }

    static QModelIndex rowNamed(WindowFixture& f, const QByteArray& name) {
        return name.isEmpty() ? f.rootIndex() : f.childNamed(f.rootIndex(), name);
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        folder = sampleTree();
    }
    void cleanup() { closeMenus(); }

    // The same ten entries and three separators for every kind of row; the row becomes
    // the only selected one and the menu's node.
    void menuForEveryKindOfRow_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("the folder itself") << QByteArray();
        QTest::newRow("folder") << QByteArray("sub");
        QTest::newRow("symbolic link") << QByteArray("link");
        QTest::newRow("name not UTF-8") << QByteArray("caf\xe9");
        QTest::newRow("ampersand in the name") << QByteArray("salt & pepper");
    }
    void menuForEveryKindOfRow() {
        QFETCH(QByteArray, name);
        WindowFixture f;
        openAndSettle(f, folder);
        WindowFixture& c = f;
        c.outline->setCurrentIndex(rowNamed(f, "sub"));
        const QModelIndex row = rowNamed(f, name);
        const ItemRef node = f.itemAt(row);
        QVERIFY(node.isValid());

        rightClick(c, centreOfRow(c, row));
        QPointer<QMenu> menu = openMenu();
        QVERIFY(menu);
        QCOMPARE(describe(menu), kEnglishMenu);
        for (const QAction* action : menu->actions()) {
            QVERIFY(action->shortcut().isEmpty());
            QVERIFY(action->isEnabled());
        }
        QCOMPARE(selectedRows(c), QModelIndexList{row});

        // What a screen reader is told: a popup menu named after the item.
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(menu.data());
        QVERIFY(reader);
        QCOMPARE(reader->role(), QAccessible::PopupMenu);
        QCOMPARE(reader->text(QAccessible::Name), node.name);

        // Nothing of it is kept: the closed menu goes away.
        menu->close();
        QTRY_VERIFY(menu.isNull());
    }

    // The next menu after a language switch speaks the new language.
    void titlesFollowTheLanguage() {
        WindowFixture f;
        openAndSettle(f, folder);
        WindowFixture& c = f;
        speak(Lang::de);
        rightClick(c, centreOfRow(c, rowNamed(f, "file.txt")));
        QVERIFY(openMenu());
        const QStringList titles = describe(openMenu());
        QCOMPARE(titles.size(), kEnglishMenu.size());
        QCOMPARE(titles.first(), QString("Im Dateimanager zeigen"));
        QCOMPARE(titles.at(Share), QString("Teilen…"));
        speak(Lang::en);
    }

    // Below the last row: no menu, and the selection stays.
    void belowTheLastRow() {
        WindowFixture f;
        openAndSettle(f, folder);
        WindowFixture& c = f;
        rightClick(c, centreOfRow(c, rowNamed(f, "link")));
        QVERIFY(openMenu());
        closeMenus();
        c.outline->setCurrentIndex(rowNamed(f, "sub"));
        const int rows = 1 + f.model().rowCount(f.rootIndex());
        const QPoint below(40, rows * TreeOutlineView::kRowHeight + 5);
        QVERIFY(below.y() < c.outline->viewport()->height());
        QCOMPARE(c.outline->rowAt(below), -1);

        rightClick(c, below);
        QVERIFY(!openMenu());
        QCOMPARE(selectedRows(c), QModelIndexList{rowNamed(f, "sub")});
    }

    // The Menu key and Shift+F10 open the same menu for the current row, at that row.
    void keyboardMenu_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::newRow("Menu key") << int(Qt::Key_Menu) << int(Qt::NoModifier);
        QTest::newRow("Shift+F10") << int(Qt::Key_F10) << int(Qt::ShiftModifier);
    }
    void keyboardMenu() {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        WindowFixture f;
        openAndSettle(f, folder);
        WindowFixture& c = f;
        c.outline->setFocus();
        c.outline->selectionModel()->clearCurrentIndex();
        QTest::keyClick(c.outline, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QVERIFY2(!openMenu(), "no current row, no menu");

        const QModelIndex row = rowNamed(f, "file.txt");
        c.outline->selectionModel()->setCurrentIndex(row, QItemSelectionModel::NoUpdate);
        QTest::keyClick(c.outline, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QMenu* menu = openMenu();
        QVERIFY(menu);
        QCOMPARE(describe(menu), kEnglishMenu);
        QCOMPARE(menu->accessibleName(), f.itemAt(row).name);
        QCOMPARE(selectedRows(c), QModelIndexList{row});
        // Its top-left corner lies on the row's lower edge, inside the row's width.
        const QRect onScreen(c.outline->viewport()->mapToGlobal(c.outline->rowRect(row).topLeft()),
                             c.outline->rowRect(row).size());
        QVERIFY2(qAbs(menu->geometry().top() - onScreen.bottom()) <= 1,
                 qPrintable(QString::number(menu->geometry().top())));
        QVERIFY(menu->geometry().left() > onScreen.left() &&
                menu->geometry().left() < onScreen.right());
    }

    // Rows and indexes map onto each other directly, with folders open and the outline
    // scrolled; a walk from the top row by row is the reference.
    void rowsMapWithoutWalking() {
        const QByteArray root = tmp.freshFolder();
        for (const char* sub : {"a", "b", "c"}) {
            makeDir(join(root, sub));
            for (int i = 0; i < 40; ++i)
                writeFile(join(join(root, sub), "f" + QByteArray::number(i)), 10);
        }
        WindowFixture f(false);
        openAndSettle(f, root);
        WindowFixture& c = f;
        for (const char* sub : {"a", "c"}) {
            QVERIFY(f.openRow(f.childNamed(f.rootIndex(), sub)));
        }
        c.outline->verticalScrollBar()->setValue(c.outline->verticalScrollBar()->maximum() / 2);
        QVERIFY(c.outline->verticalScrollBar()->value() > 0);

        int row = 0;
        int checkedOnScreen = 0;
        for (QModelIndex index = f.rootIndex(); index.isValid();
             index = c.outline->indexBelow(index), ++row) {
            QCOMPARE(c.outline->rowOf(index), row);
            QCOMPARE(c.outline->indexAtRow(row), index);
            const QRect rect = c.outline->visualRect(index);
            if (rect.top() >= 0 && rect.bottom() < c.outline->viewport()->height()) {
                QCOMPARE(c.outline->rowAt(rect.center()), row);
                ++checkedOnScreen;
            }
        }
        QCOMPARE(row, 1 + 3 + 80);
        QVERIFY(checkedOnScreen > 10);
        QVERIFY(!c.outline->indexAtRow(row).isValid());
        // A row inside a closed folder has no row on screen.
        const QModelIndex closed = f.childNamed(f.rootIndex(), "b");
        QVERIFY(f.openRow(closed));
        c.outline->collapse(closed);
        QCOMPARE(c.outline->rowOf(f.model().index(0, 0, closed)), -1);
        QVERIFY(c.outline->rowRect(f.model().index(0, 0, closed)).isEmpty());
    }
};

QTEST_MAIN(TestContextMenu)
#include "tst_contextmenu.moc"
