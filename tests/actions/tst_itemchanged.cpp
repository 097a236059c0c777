// SPDX-License-Identifier: GPL-2.0-or-later
// An action acts only on the item its row showed: when the item or a folder on its way
// was replaced since (by a link elsewhere, or by another file of the same name), nothing
// is done on disk, anywhere, and the status line says so.
#include "ModalDriver.h"
#include "TempTree.h"
#include "platform/ItemReach.h"
#include "window/WindowFixture.h"

using namespace temptree;

namespace {

enum class Act { Trash, Rename, Duplicate, Compress };

// Every item below the folder, with its kind, mode, size and time, and where links point.
QByteArray facts(const QByteArray& folder) {
    return runForOutput("/usr/bin/find", {folder, "-printf", "%P %y %M %s %T@ %l\n"}).value_or("");
}

} // namespace

class TestItemChanged : public QObject {
    Q_OBJECT
    Dir tmp;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        // The home trash is the test's own.
        qputenv("XDG_DATA_HOME", tmp.bytes() + "/data");
    }

    void nothingIsDone_data() {
        QTest::addColumn<int>("act");
        QTest::addColumn<bool>("folderSwapped"); // else the item itself is replaced
        for (const auto& [name, act] : {std::pair{"trash", Act::Trash},
                                        {"rename", Act::Rename},
                                        {"duplicate", Act::Duplicate},
                                        {"compress", Act::Compress}}) {
            QTest::addRow("%s, folder replaced by a link", name) << int(act) << true;
            QTest::addRow("%s, item replaced", name) << int(act) << false;
        }
    }
    void nothingIsDone() {
        QFETCH(int, act);
        QFETCH(bool, folderSwapped);
        const QByteArray root = tmp.freshFolder();
        const QByteArray elsewhere = tmp.freshFolder();
        makeDir(join(root, "sub"));
        writeBytes(join(root, "sub/inner.txt"), "shown");
        writeBytes(join(elsewhere, "inner.txt"), "never shown");

        WindowFixture f;
        QVERIFY(f.openAt(root));
        const QModelIndex sub = f.childNamed(f.rootIndex(), "sub");
        QVERIFY(f.openRow(sub));
        const ItemRef inner = f.itemAt(f.childNamed(sub, "inner.txt"));
        QVERIFY(inner.isValid());

        // Between the row and the action, the folder becomes a link to another one, or
        // the file another file of the same name.
        if (folderSwapped) {
            QCOMPARE(rename(join(root, "sub").constData(), join(root, "sub.old").constData()), 0);
            QCOMPARE(symlink(elsewhere.constData(), join(root, "sub").constData()), 0);
        } else {
            QCOMPARE(rename(join(root, "sub/inner.txt").constData(),
                            join(root, "sub/inner.old").constData()),
                     0);
            writeBytes(join(root, "sub/inner.txt"), "a newcomer");
        }
        const QByteArray rootBefore = facts(root);
        const QByteArray elsewhereBefore = facts(elsewhere);

        switch (Act(act)) {
        case Act::Trash:
            f.actions->trash(inner);
            break;
        case Act::Rename:
            answerRename("inner.txt", "renamed.txt");
            f.actions->rename(inner);
            break;
        case Act::Duplicate:
            f.actions->duplicate(inner);
            break;
        case Act::Compress:
            f.actions->compress(inner);
            break;
        }
        const std::optional<ActionOutcome> outcome = f.nextOutcome();
        QVERIFY(outcome);
        QCOMPARE(outcome->error, kItemChanged);
        QCOMPARE(f.status->text(), QString("inner.txt changed on disk; nothing was done"));
        QCOMPARE(facts(root), rootBefore);
        QCOMPARE(facts(elsewhere), elsewhereBefore);
        QVERIFY(!QApplication::activeModalWidget());
    }
};

QTEST_MAIN(TestItemChanged)
#include "tst_itemchanged.moc"
