// SPDX-License-Identifier: GPL-2.0-or-later
// A stand-in for the program around one file action, for tests that end it at any
// moment: it quits on SIGTERM, SIGINT and SIGHUP as the program does, through the event
// loop, and prints the action's outcome (the errno, 0 when done) when it ends.
//   actionrunner duplicate|compress FOLDER NAME
#include "actions/FileActions.h"
#include "platform/DirectoryReader.h"
#include "platform/MainThreadInbox.h"
#include "platform/QuitSignals.h"
#include "platform/UniqueFd.h"

#include <QApplication>
#include <array>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

int main(int argc, char** argv) {
    if (argc != 4)
        return 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QuitSignals quitSignals;
    QObject::connect(&quitSignals, &QuitSignals::quitRequested, &app, &QCoreApplication::quit);

    // The tree as a walk of the folder would have left it: the folder and the item, as
    // its listing gives it (the item itself is not looked at: it may not answer).
    const QByteArray folder(argv[2]), name(argv[3]);
    struct stat top {};
    const UniqueFd listed(open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!listed || fstat(listed.get(), &top) != 0)
        return 2;
    std::array<char, 32 * 1024> buffer;
    DirectoryReader reader(listed.get(), buffer.data(), buffer.size());
    quint64 ino = 0;
    bool isDir = false;
    while (!ino && reader.readBatch())
        while (const char* entry = reader.nextName())
            if (name == entry) {
                ino = reader.lastInode();
                isDir = reader.lastType() == DT_DIR;
                break;
            }
    if (!ino)
        return 2;
    ItemRef node;
    node.path = folder + '/' + name;
    node.name = QString::fromUtf8(name);
    node.isFolder = isDir;
    node.location.root = folder;
    node.location.rootId = {top.st_dev, top.st_ino};
    node.location.relative = name;
    node.location.listedIno = ino;
    node.location.folderDev = top.st_dev;

    FileActions actions(nullptr);
    QObject::connect(&actions, &FileActions::finished, &app, [](const ActionOutcome& outcome) {
        if (outcome.underWay)
            return;
        std::printf("%d\n", outcome.error);
        std::fflush(stdout);
        QCoreApplication::quit();
    });
    if (qstrcmp(argv[1], "duplicate") == 0)
        actions.duplicate(node);
    else
        actions.compress(node);
    std::printf("started\n");
    std::fflush(stdout);
    return app.exec();
}
