// SPDX-License-Identifier: GPL-2.0-or-later
// A mounted volume whose program never answers (a hung FUSE mount) must not freeze the
// window: not when the volumes panel is filled, not when a folder that holds it is
// shown, and the measurements caught in it end when another folder is opened.
#include "ChildProcesses.h"
#include "HungMount.h"
#include "TempTree.h"
#include "window/WindowFixture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLayout>
#include <QProcess>
#include <QThreadPool>

using namespace temptree;

namespace {

constexpr std::chrono::seconds patience(10);

// The texts of the volumes panel's rows, one string a row.
QStringList rowTexts(WindowFixture& f) {
    QStringList rows;
    for (const QWidget* row :
         f.window->volumes().rows()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
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

    // The panel lists the silent volume by its place, without figures, beside the others.
    void windowAppearsAndAnswers() {
        const QByteArray at = join(tmp.freshFolder(), "silent");
        makeDir(at);
        HungMount mount;
        HUNG_MOUNT_OR_SKIP(mount, at);
        mount.rescueAfter(patience);

        WindowFixture f;
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window));
        QTRY_VERIFY(rowTexts(f).contains(QStringLiteral("|silent|")));
        QVERIFY(std::ranges::any_of(rowTexts(f),
                                    [](const QString& row) { return row.contains(" GB"); }));
        f.window->volumes().refresh(); // asked again while the first question still hangs
        QTRY_VERIFY(rowTexts(f).contains(QStringLiteral("|silent|")));
        QVERIFY(!mount.rescued());

        // Once it answers (with an error), it goes: it has no capacity to show.
        mount.release();
        f.window->volumes().refresh();
        QTRY_VERIFY(!rowTexts(f).contains(QStringLiteral("|silent|")));
    }

    // A shown folder holding the silent volume paints its rows and sizes its other
    // items; another folder opened meanwhile is measured in full: the walker caught in
    // the volume stays caught, and the others go on.
    void folderHoldingItIsShown() {
        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "file.txt"), 5000);
        const QByteArray at = join(folder, "silent");
        makeDir(at);
        HungMount mount;
        HUNG_MOUNT_OR_SKIP(mount, at);
        mount.rescueAfter(patience);

        // Without the model tester, which opens every folder, the silent one included.
        WindowFixture f(false);
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window));
        f.openPath(folder);
        QTRY_COMPARE(f.rowNames(f.rootIndex()).size(), 2);
        f.window->grab();
        const EntryId file = f.entryAt(f.childNamed(f.rootIndex(), "file.txt"));
        QCOMPARE(f.index().allocated(file), statBlocksBytes(join(folder, "file.txt")));

        const QByteArray other = tmp.freshFolder();
        makeDir(join(other, "sub"));
        writeFile(join(other, "sub/data"), 70000);
        f.openPath(other);
        QVERIFY(f.settled());
        const EntryId sub = f.entryAt(f.childNamed(f.rootIndex(), "sub"));
        QCOMPARE(f.index().allocated(sub), duBytes(join(other, "sub")));
        QVERIFY(!mount.rescued());
    }

    // File actions never wait on measuring: with every measuring worker and two actions
    // caught in the silent volume, a copy of a small file elsewhere completes. Cancel on
    // a copy caught there frees the window at once, and nothing of it is left once the
    // volume answers; the window, when it goes, waits for the caught ones two seconds.
    void actionsGoOnBesideACaughtOne() {
        const QByteArray folder = tmp.freshFolder();
        writeBytes(join(folder, "small.txt"), "abc");
        const QByteArray at = join(folder, "silent");
        makeDir(at);
        HungMount mount;
        HUNG_MOUNT_OR_SKIP(mount, at);
        mount.rescueAfter(patience);

        QElapsedTimer closing;
        {
            WindowFixture f(false);
            f.window->show();
            QVERIFY(QTest::qWaitForWindowExposed(f.window));
            f.openPath(folder);
            QTRY_COMPARE(f.rowNames(f.rootIndex()).size(), 2);
            // Every measuring worker caught: the walk's own in the volume, and the rest
            // by work that looks into it.
            for (int i = 0; i < f.tree.workers().maxThreadCount(); ++i)
                f.tree.workers().start([at] {
                    struct stat st {};
                    stat((at + "/inside").constData(), &st);
                });
            QTRY_COMPARE(f.tree.workers().activeThreadCount(), f.tree.workers().maxThreadCount());
            QVERIFY(f.pick("silent"));
            const ItemRef silent = f.picked;
            f.actions->compress(silent);
            f.actions->compress(silent);

            QVERIFY(f.pick("small.txt"));
            f.actions->duplicate(f.picked);
            const auto copied = f.nextOutcome();
            QVERIFY(copied);
            QCOMPARE(copied->error, 0);
            QCOMPARE(runForOutput("/bin/cat", {join(folder, "small copy.txt")}),
                     std::optional<QByteArray>("abc"));

            f.actions->duplicate(silent);
            QWidget* dialog = QApplication::activeModalWidget();
            QVERIFY(dialog);
            QElapsedTimer cancelling;
            cancelling.start();
            QTest::keyClick(dialog, Qt::Key_Escape);
            QTRY_VERIFY_WITH_TIMEOUT(!QApplication::activeModalWidget(), 200);
            QVERIFY(cancelling.elapsed() < 200);
            QVERIFY(!mount.rescued());
            closing.start();
        }
        QVERIFY2(closing.elapsed() < 3000, qPrintable(QString::number(closing.elapsed())));
        mount.release();
        QCOMPARE(runForOutput("/bin/ls", {"-A", folder}),
                 std::optional<QByteArray>("silent\nsmall copy.txt\nsmall.txt\n"));
    }

    // The program told to end (SIGTERM) while an action is caught in the silent volume
    // ends within three seconds.
    void quitWhileCaught() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray at = join(folder, "silent");
        makeDir(at);
        HungMount mount;
        HUNG_MOUNT_OR_SKIP(mount, at);
        mount.rescueAfter(patience);
        QProcess runner;
        // A sanitizer's leak check at exit stops every thread, and waits on the one caught
        // in the mount: not what the program does.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        runner.setProcessEnvironment(environment);
        runner.start(QStringLiteral(ACTION_RUNNER),
                     {"compress", QFile::decodeName(folder), "silent"});
        QVERIFY(runner.waitForStarted());
        QByteArray said;
        QTRY_VERIFY((said += runner.readAllStandardOutput()).contains("started"));
        QTest::qWait(100);
        QElapsedTimer ending;
        ending.start();
        runner.terminate();
        QVERIFY(runner.waitForFinished(10000));
        QVERIFY2(ending.elapsed() < 3000, qPrintable(QString::number(ending.elapsed())));
        QVERIFY(!mount.rescued());
    }
};

QTEST_MAIN(TestHungMount)
#include "tst_hungmount.moc"
