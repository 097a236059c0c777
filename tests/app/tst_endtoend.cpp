// The real program in a real X session (Xvfb): it opens its window on a folder given
// on the command line, and closing the window ends it cleanly.
#include "TempTree.h"
#include "X11Windows.h"

#include <QProcess>

using namespace temptree;

class TestEndToEnd : public QObject {
    Q_OBJECT
    Dir tmp;

    void startProgram(QProcess& program, const QStringList& arguments) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "xcb");
        env.insert("XDG_CONFIG_HOME", QFile::decodeName(tmp.bytes()) + "/config");
        program.setProcessEnvironment(env);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(SIZELOOM_BINARY, arguments);
        QVERIFY(program.waitForStarted());
    }

private Q_SLOTS:
    void initTestCase() {
        if (qEnvironmentVariableIsEmpty("DISPLAY"))
            QSKIP("needs an X display; ctest runs this test under xvfb-run");
        QVERIFY(X11Display().isOpen());
    }

    void opensOnAFolderAndQuitsWhenClosed_data() {
        QTest::addColumn<bool>("withFolder");
        QTest::newRow("folder argument") << true;
        QTest::newRow("no argument") << false;
    }
    void opensOnAFolderAndQuitsWhenClosed() {
        QFETCH(bool, withFolder);
        const QByteArray folder = join(tmp.bytes(), "tree");
        if (withFolder && !QFileInfo::exists(QFile::decodeName(folder))) {
            makeDir(folder);
            makeDir(join(folder, "sub"));
            writeFile(join(join(folder, "sub"), "data"), 100000);
        }
        QProcess program;
        startProgram(program, withFolder ? QStringList{QFile::decodeName(folder)} : QStringList{});
        X11Display x;
        QVERIFY2(x.isOpen(), "cannot open the X display");
        Window window = 0;
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        QTRY_COMPARE(x.geometry(window).size(), QSize(820, 600));
        const QByteArray shots = qgetenv("SIZELOOM_SCREENSHOTS");
        if (!shots.isEmpty()) {
            QTest::qWait(withFolder ? 1500 : 300); // only so the picture shows the filled tree
            x.capture(window).save(QFile::decodeName(shots) + "/x11-" + QTest::currentDataTag() +
                                   ".png");
        }
        x.requestClose(window);
        QVERIFY(program.waitForFinished(15000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    // "Open With" from a file manager starts a second copy with the folder; it hands the
    // folder to the running window and ends.
    void secondLaunchHandsTheFolderOver() {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs a session bus; ctest runs this test under dbus-run-session");
        const QByteArray folder = join(tmp.bytes(), "handed");
        makeDir(folder);
        QProcess first;
        startProgram(first, {});
        X11Display x;
        QVERIFY2(x.isOpen(), "cannot open the X display");
        Window window = 0;
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        // The empty face has no accent colour in its top strip; the browsing face's
        // buttons there are accent-coloured.
        const auto topStripHasAccent = [&] {
            const QImage top = x.capture(window).copy(0, 0, 820, 40);
            for (int y = 0; y < top.height(); ++y)
                for (int x0 = 0; x0 < top.width(); ++x0) {
                    const QColor seen = top.pixelColor(x0, y);
                    if (seen.red() > 240 && seen.green() > 80 && seen.green() < 110 &&
                        seen.blue() < 50)
                        return true;
                }
            return false;
        };
        QVERIFY(!topStripHasAccent());

        QProcess second;
        startProgram(second, {"file://" + QFile::decodeName(folder)});
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(topStripHasAccent(), 10000);
        QCOMPARE(first.state(), QProcess::Running);

        x.requestClose(window);
        QVERIFY(first.waitForFinished(15000));
        QCOMPARE(first.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
