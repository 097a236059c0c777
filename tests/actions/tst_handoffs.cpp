// SPDX-License-Identifier: GPL-2.0-or-later
// The hand-offs to the desktop: show in the file manager, preview, properties and
// share, each with the desktop's service on a private session bus and without it.
#include "FakeDesktop.h"
#include "MenuProbe.h"
#include "TempTree.h"
#include "actions/PreviewWindow.h"
#include "actions/PropertiesWindow.h"
#include "platform/FileUrl.h"
#include "platform/FolderHandler.h"

#include <QFile>
#include <QUrl>
#include <unistd.h>

using namespace temptree;
using namespace menuprobe;

namespace {

// A program that writes its arguments, each ended by a NUL byte, to NAME.args next to
// itself (NAME being its first argument when asked to, else its own name).
void recordingProgram(const QByteArray& path, bool namedByFirstArgument = false) {
    const QByteArray file = namedByFirstArgument ? QByteArray("\"$1\"") : lastPathComponent(path);
    writeBytes(path, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\0' \"$a\"; done > \"${0%/*}/" +
                         file + ".args\"\n");
    QCOMPARE(chmod(path.constData(), 0700), 0);
}

QList<QByteArray> recordedArgs(const QByteArray& file) {
    QFile recorded(QFile::decodeName(file));
    if (!recorded.open(QIODevice::ReadOnly))
        return {};
    QList<QByteArray> args = recorded.readAll().split('\0');
    args.removeLast();
    return args;
}

QByteArray pathOfUri(const QString& uri) {
    return localPathBytes(QUrl(uri, QUrl::StrictMode));
}

} // namespace

class TestHandOffs : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray bin;
    QByteArray folder;
    std::unique_ptr<FakeDesktop> desktop;

    QByteArray sampleTree() {
        const QByteArray root = tmp.freshFolder();
        writeFile(join(root, "plain.txt"), 100);
        makeDir(join(root, "sub"));
        writeFile(join(root, "sub/inside"), 100);
        writeFile(join(root, "a \"quoted\" \\ name"), 100);
        writeFile(join(root, "caf\xe9"), 100);
        return root;
    }

    // A desktop whose default for folders is this program, next to one other
    // application for folders; both record what they are asked to open.
    void folderApplications() {
        const QByteArray data = join(tmp.bytes(), "data");
        const QByteArray apps = join(data, "applications");
        const QByteArray config = join(tmp.bytes(), "config");
        for (const QByteArray& dir : {data, apps, config, join(tmp.bytes(), "none")})
            makeDir(dir);
        recordingProgram(join(bin, "open-folder"), true);
        const auto entry = [&](const QByteArray& id, const QByteArray& recordAs) {
            writeBytes(join(apps, id), "[Desktop Entry]\nType=Application\nName=" + recordAs +
                                           "\nExec=" + join(bin, "open-folder") + " " + recordAs +
                                           " %U\nMimeType=inode/directory;\n");
        };
        entry(kOwnDesktopId, "own");
        entry("files.desktop", "files");
        // The desktop finds applications for a type through this index.
        QVERIFY(runForOutput("/usr/bin/update-desktop-database", {apps}));
        writeBytes(join(config, "mimeapps.list"),
                   QByteArray("[Default Applications]\ninode/directory=") + kOwnDesktopId + "\n");
        qputenv("XDG_DATA_HOME", data);
        qputenv("XDG_DATA_DIRS", join(tmp.bytes(), "none"));
        qputenv("XDG_CONFIG_HOME", config);
        qputenv("XDG_CONFIG_DIRS", join(tmp.bytes(), "none"));
    }

    static QModelIndex row(WindowFixture& f, const QByteArray& name) {
        return f.childNamed(f.rootIndex(), name);
    }

    static QMenu* sharePicker() {
        QMenu* picker = nullptr;
        return QTest::qWaitFor([&] { return (picker = openMenu()) != nullptr; }) ? picker : nullptr;
    }

private Q_SLOTS:
    void initTestCase() {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs a session bus; ctest runs this test under dbus-run-session");
        QVERIFY(tmp.isValid());
        bin = join(tmp.bytes(), "bin");
        makeDir(bin);
        folderApplications();
        recordingProgram(join(bin, "xdg-email"));
        recordingProgram(join(bin, "bluetooth-sendto"));
        qputenv("PATH", bin);
        qunsetenv("XDG_ACTIVATION_TOKEN");
        qunsetenv("DESKTOP_STARTUP_ID");
        folder = sampleTree();
        desktop = std::make_unique<FakeDesktop>();
        QVERIFY(desktop->isConnected());
    }
    void init() {
        desktop->setPresent(true, true, true);
        desktop->fileManager.calls.clear();
        desktop->fileManager.hasProperties = true;
        desktop->previewer.calls.clear();
        desktop->portal.attachments.clear();
    }
    void cleanup() { closeMenus(); }

    // The file manager gets the item's URI, every byte of the path in it, and the
    // launch's activation token, so that it may come forward.
    void revealInFileManager_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("variable"); // holding the token
        QTest::newRow("plain") << QByteArray("plain.txt") << QByteArray();
        QTest::newRow("folder") << QByteArray("sub") << QByteArray("XDG_ACTIVATION_TOKEN");
        QTest::newRow("not UTF-8") << QByteArray("caf\xe9") << QByteArray("DESKTOP_STARTUP_ID");
    }
    void revealInFileManager() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, variable);
        WindowFixture f;
        openAndSettle(f, folder);
        if (!variable.isEmpty())
            qputenv(variable.constData(), "token-42");
        choose(f, name, Reveal);
        if (!variable.isEmpty())
            qunsetenv(variable.constData());
        QTRY_COMPARE(desktop->fileManager.calls.size(), 1);
        const BusCall call = desktop->fileManager.calls.first();
        QCOMPARE(call.method, QString("ShowItems"));
        QCOMPARE(call.uris.size(), 1);
        QVERIFY(call.uris.first().startsWith("file:///"));
        QCOMPARE(pathOfUri(call.uris.first()), join(folder, name));
        QCOMPARE(call.startupId, variable.isEmpty() ? QString() : QString("token-42"));
        QVERIFY(!f.actions->ownPreview());
    }

    // Double-click and Enter reveal the row's item; a folder's row stays as it was.
    void doubleClickAndEnter() {
        WindowFixture f;
        openAndSettle(f, folder);
        WindowFixture& c = f;
        const QModelIndex sub = row(f, "sub");
        const int rows = 1 + f.model().rowCount(f.rootIndex());
        const auto doubleClick = [&c](const QPoint& viewportPoint) {
            QTest::mouseDClick(c.window->windowHandle(), Qt::LeftButton, {},
                               c.outline->viewport()->mapTo(c.window, viewportPoint));
        };
        doubleClick(QPoint(40, rows * TreeOutlineView::kRowHeight + 6));
        doubleClick(centreOfRow(c, sub));
        QTRY_COMPARE(desktop->fileManager.calls.size(), 1);
        QCOMPARE(pathOfUri(desktop->fileManager.calls.first().uris.value(0)), join(folder, "sub"));
        QVERIFY(!c.outline->isExpanded(sub));
        QCOMPARE(c.outline->selectionModel()->selectedRows(), QModelIndexList{sub});

        c.outline->setFocus();
        c.outline->setCurrentIndex(row(f, "plain.txt"));
        QTest::keyClick(c.outline, Qt::Key_Return);
        QTRY_COMPARE(desktop->fileManager.calls.size(), 2);
        QCOMPARE(pathOfUri(desktop->fileManager.calls.last().uris.value(0)),
                 join(folder, "plain.txt"));
    }

    // Without a file manager the folder holding the item opens in the desktop's
    // application for folders; this program, though the default, is passed over.
    void revealWithoutFileManager() {
        desktop->setPresent(false, true, true);
        WindowFixture f;
        openAndSettle(f, folder);
        const QByteArray sub = join(folder, "sub");
        QVERIFY(f.openRow(row(f, "sub")));
        choose(f, f.model().index(0, 0, row(f, "sub")), Reveal);
        QTRY_VERIFY(!recordedArgs(join(bin, "files.args")).isEmpty());
        const QList<QByteArray> args = recordedArgs(join(bin, "files.args"));
        QCOMPARE(args.size(), 2);
        QCOMPARE(localPathBytes(QUrl(QString::fromLatin1(args[1]))), sub);
        QVERIFY(!QFile::exists(QFile::decodeName(join(bin, "own.args"))));
        QVERIFY(QFile::remove(QFile::decodeName(join(bin, "files.args"))));
        QVERIFY(desktop->fileManager.calls.isEmpty());
    }

    // The previewer shows the item; Space on the selected row asks it to toggle.
    void quickLookThroughPreviewer() {
        WindowFixture f;
        openAndSettle(f, folder);
        choose(f, "caf\xe9", QuickLook);
        QTRY_COMPARE(desktop->previewer.calls.size(), 1);
        PreviewCall call = desktop->previewer.calls.first();
        QCOMPARE(pathOfUri(call.uri), join(folder, "caf\xe9"));
        QCOMPARE(call.windowHandle, 0);
        QCOMPARE(call.closeIfShown, false);

        f.outline->setFocus();
        f.outline->setCurrentIndex(row(f, "plain.txt"));
        QTest::keyClick(f.outline, Qt::Key_Space);
        QTRY_COMPARE(desktop->previewer.calls.size(), 2);
        call = desktop->previewer.calls.last();
        QCOMPARE(pathOfUri(call.uri), join(folder, "plain.txt"));
        QCOMPARE(call.closeIfShown, true);
        QVERIFY(!f.actions->ownPreview());
    }

    // Without a previewer Sizeloom's own window opens; Space and Esc close it.
    void quickLookWithoutPreviewer() {
        desktop->setPresent(true, false, true);
        WindowFixture f;
        openAndSettle(f, folder);
        WindowFixture& c = f;
        choose(f, "plain.txt", QuickLook);
        QTRY_VERIFY(c.actions->ownPreview() && c.actions->ownPreview()->isVisible());
        QCOMPARE(c.actions->ownPreview()->windowTitle(), QString("plain.txt"));
        QCOMPARE(c.actions->ownPreview()->node().path, f.itemAt(row(f, "plain.txt")).path);

        c.outline->setCurrentIndex(row(f, "sub"));
        QTest::keyClick(c.outline, Qt::Key_Space);
        QTRY_VERIFY(!c.actions->ownPreview());
        QTest::keyClick(c.outline, Qt::Key_Space);
        QTRY_VERIFY(c.actions->ownPreview() && c.actions->ownPreview()->isVisible());
        QCOMPARE(c.actions->ownPreview()->windowTitle(), QString("sub"));
        QVERIFY(QTest::qWaitForWindowActive(c.actions->ownPreview()));
        QTest::keyClick(c.actions->ownPreview(), Qt::Key_Escape);
        QTRY_VERIFY(!c.actions->ownPreview());
        QVERIFY(desktop->previewer.calls.isEmpty());
    }

    // The file manager's properties window when it has one, else Sizeloom's own.
    void getInfo_data() {
        QTest::addColumn<bool>("fileManager");
        QTest::addColumn<bool>("withProperties");
        QTest::addColumn<bool>("ownWindow");
        QTest::newRow("file manager with properties") << true << true << false;
        QTest::newRow("file manager without properties") << true << false << true;
        QTest::newRow("no file manager") << false << false << true;
    }
    void getInfo() {
        QFETCH(bool, fileManager);
        QFETCH(bool, withProperties);
        QFETCH(bool, ownWindow);
        desktop->setPresent(fileManager, true, true);
        desktop->fileManager.hasProperties = withProperties;
        WindowFixture f;
        openAndSettle(f, folder);
        const QByteArray name = "a \"quoted\" \\ name";
        choose(f, name, GetInfo);
        if (ownWindow) {
            QTRY_COMPARE(f.actions->ownPropertiesWindows().size(), 1);
            PropertiesWindow* info = f.actions->ownPropertiesWindows().first();
            QVERIFY(info && info->isVisible());
            QCOMPARE(info->windowTitle(), QString::fromUtf8(name));
            QCOMPARE(info->value(PropertiesWindow::Path)->text(),
                     QFile::decodeName(join(folder, name)));
            QVERIFY(desktop->fileManager.calls.isEmpty());
        } else {
            QTRY_COMPARE(desktop->fileManager.calls.size(), 1);
            QCOMPARE(desktop->fileManager.calls.first().method, QString("ShowItemProperties"));
            QCOMPARE(pathOfUri(desktop->fileManager.calls.first().uris.value(0)),
                     join(folder, name));
            QVERIFY(f.actions->ownPropertiesWindows().isEmpty());
        }
    }

    // The picker lists what this machine has; each entry hands the item over.
    void sharePickerEntries_data() {
        QTest::addColumn<bool>("portal");
        QTest::addColumn<QByteArray>("programs");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QStringList>("entries");
        QTest::newRow("portal and Bluetooth")
            << true << bin << QByteArray("caf\xe9") << QStringList{"Email", "Bluetooth"};
        QTest::newRow("mail program and Bluetooth")
            << false << bin << QByteArray("caf\xe9") << QStringList{"Email", "Bluetooth"};
        QTest::newRow("only the portal")
            << true << join(tmp.bytes(), "none") << QByteArray("plain.txt") << QStringList{"Email"};
        QTest::newRow("nothing at all")
            << false << join(tmp.bytes(), "none") << QByteArray("plain.txt") << QStringList{};
        QTest::newRow("a folder") << true << bin << QByteArray("sub") << QStringList{};
    }
    void sharePickerEntries() {
        QFETCH(bool, portal);
        QFETCH(QByteArray, programs);
        QFETCH(QByteArray, name);
        QFETCH(QStringList, entries);
        desktop->setPresent(true, true, portal);
        qputenv("PATH", programs);
        WindowFixture f;
        openAndSettle(f, folder);
        choose(f, name, Share);
        QMenu* picker = sharePicker();
        QVERIFY(picker);
        qputenv("PATH", bin);
        if (entries.isEmpty()) {
            QCOMPARE(describe(picker), QStringList{"No sharing services available"});
            QVERIFY(!picker->actions().first()->isEnabled());
            return;
        }
        QCOMPARE(describe(picker), entries);
        // Just above the item's row.
        const QRect rowRect = f.outline->rowRect(row(f, name));
        const QPoint rowTop = f.outline->viewport()->mapToGlobal(rowRect.topLeft());
        QCOMPARE(picker->geometry().bottom() + 1, rowTop.y());
        QCOMPARE(picker->geometry().left(), rowTop.x());

        const QByteArray path = join(folder, name);
        for (QAction* entry : picker->actions())
            entry->trigger();
        closeMenus();
        if (portal) {
            QTRY_COMPARE(desktop->portal.attachments.size(), 1);
            struct stat st {};
            QCOMPARE(stat(path.constData(), &st), 0);
            QCOMPARE(desktop->portal.attachments.first(),
                     (QList<std::pair<dev_t, ino_t>>{{st.st_dev, st.st_ino}}));
        } else {
            QTRY_COMPARE(recordedArgs(join(bin, "xdg-email.args")),
                         (QList<QByteArray>{"--attach", path}));
        }
        if (entries.size() > 1) {
            QTRY_COMPARE(recordedArgs(join(bin, "bluetooth-sendto.args")),
                         (QList<QByteArray>{"--", path}));
        }
        for (const char* file : {"xdg-email.args", "bluetooth-sendto.args"})
            QFile::remove(QFile::decodeName(join(bin, file)));
    }

    // When the row is gone by the time the picker shows, it hangs from the outline's
    // top-left corner.
    void sharePickerForARowThatIsGone() {
        WindowFixture f;
        openAndSettle(f, folder);
        choose(f, "plain.txt", Share);
        f.openPath(join(folder, "sub")); // the old rows go while the portal is asked
        QMenu* picker = sharePicker();
        QVERIFY(picker);
        const QPoint corner = f.outline->viewport()->mapToGlobal(QPoint(0, 0));
        QCOMPARE(picker->geometry().bottom() + 1, corner.y());
        QCOMPARE(picker->geometry().left(), corner.x());
    }
};

QTEST_MAIN(TestHandOffs)
#include "moc_FakeDesktop.cpp"
#include "tst_handoffs.moc"
