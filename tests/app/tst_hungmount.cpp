// A mounted volume whose program never answers (a hung FUSE mount) must not freeze the
// window: not when the volumes panel is filled, not when a folder that holds it is
// shown, and the measurements caught in it end when another folder is opened.
#include "ChildProcesses.h"
#include "HungMount.h"
#include "TempTree.h"
#include "ui/WindowFixture.h"

#include <QLayout>

using namespace temptree;

namespace {

constexpr std::chrono::seconds patience(10);

// The texts of the volumes panel's rows, one string a row.
QStringList rowTexts(const AppController& c) {
    QStringList rows;
    for (const QWidget* row : c.volumesList->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        QStringList texts;
        for (const QLabel* label : row->findChildren<QLabel*>())
            texts << label->text();
        rows << texts.join(u'|');
    }
    return rows;
}

} // namespace

class TestHungMount : public QObject {
    Q_OBJECT
    Dir tmp;

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }
    void cleanup() { qunsetenv("SIZELOOM_MEASURE"); }

    // The panel lists the silent volume by its place, without figures, beside the others.
    void windowAppearsAndAnswers() {
        const QByteArray at = join(tmp.freshFolder(), "silent");
        makeDir(at);
        HungMount mount;
        HUNG_MOUNT_OR_SKIP(mount, at);
        mount.rescueAfter(patience);

        WindowFixture f;
        f.c.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.c.window));
        QTRY_VERIFY(rowTexts(f.c).contains(QStringLiteral("|silent|")));
        QVERIFY(std::ranges::any_of(rowTexts(f.c),
                                    [](const QString& row) { return row.contains(" GB"); }));
        f.c.refreshVolumes(); // asked again while the first question still hangs
        QTRY_VERIFY(rowTexts(f.c).contains(QStringLiteral("|silent|")));
        QVERIFY(!mount.rescued());

        // Once it answers (with an error), it goes: it has no capacity to show.
        mount.release();
        f.c.refreshVolumes();
        QTRY_VERIFY(!rowTexts(f.c).contains(QStringLiteral("|silent|")));
    }

    // A shown folder holding the silent volume paints its rows and sizes its other
    // items; another folder opened meanwhile is measured in full. The du engine's
    // processes caught in the volume are ended then; the in-process engine's worker
    // caught there stays caught, and the others go on.
    void folderHoldingItIsShown_data() {
        QTest::addColumn<QByteArray>("engine");
        QTest::newRow("in-process") << QByteArray();
        QTest::newRow("du") << QByteArray("du");
    }
    void folderHoldingItIsShown() {
        QFETCH(QByteArray, engine);
        qputenv("SIZELOOM_MEASURE", engine);
        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "file.txt"), 5000);
        const QByteArray at = join(folder, "silent");
        makeDir(at);
        HungMount mount;
        HUNG_MOUNT_OR_SKIP(mount, at);
        mount.rescueAfter(patience);

        // Without the model tester, which opens every folder, the silent one included.
        WindowFixture f(false);
        f.c.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.c.window));
        f.c.openPath(folder);
        QTRY_COMPARE(f.rowNames(f.rootIndex()).size(), 2);
        f.c.window->grab();
        const NodePtr file = f.model().nodeAt(f.childNamed(f.rootIndex(), "file.txt"));
        QTRY_COMPARE(file->size(), statBlocksBytes(join(folder, "file.txt")));
        // du of the folder and of the silent volume wait in it.
        if (engine == "du")
            QTRY_COMPARE(childprocesses::count("du"), 2);

        const QByteArray other = tmp.freshFolder();
        makeDir(join(other, "sub"));
        writeFile(join(other, "sub/data"), 70000);
        f.c.openPath(other);
        QVERIFY(f.settled());
        const NodePtr sub = f.model().nodeAt(f.childNamed(f.rootIndex(), "sub"));
        QTRY_COMPARE(sub->size(), duBytes(join(other, "sub")));
        QTRY_COMPARE(childprocesses::count("du"), 0);
        QVERIFY(!mount.rescued());
    }
};

QTEST_MAIN(TestHungMount)
#include "tst_hungmount.moc"
