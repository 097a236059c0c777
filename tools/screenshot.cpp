// SPDX-License-Identifier: GPL-2.0-or-later
// A picture of the real main window, drawn offscreen in a light or a dark palette:
//   sizeloom_screenshot OUT.png [--dark] [--size WxH] [--stop-after MS] [--open NAME]...
//                       [--lang CODE] FOLDER
// --stop-after stops the walk that long after the folder is opened, as Esc does;
// --open opens the row of that name (repeat to go deeper: each is looked for below the
// last one opened); --lang speaks that language (ko en zh es ja fr de pt ru).
#include "core/SizeTree.h"
#include "platform/PathInfo.h"
#include "text/Lang.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"
#include "window/LanguageSwitch.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPalette>
#include <QStyleFactory>
#include <QTimer>
#include <cstdio>

namespace {

QPalette darkPalette() {
    QPalette dark;
    const QColor window(0x2b, 0x2b, 0x2e), base(0x1e, 0x1e, 0x20), text(0xe8, 0xe8, 0xea);
    dark.setColor(QPalette::Window, window);
    dark.setColor(QPalette::WindowText, text);
    dark.setColor(QPalette::Base, base);
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x29));
    dark.setColor(QPalette::Text, text);
    dark.setColor(QPalette::Button, window);
    dark.setColor(QPalette::ButtonText, text);
    dark.setColor(QPalette::ToolTipBase, base);
    dark.setColor(QPalette::ToolTipText, text);
    dark.setColor(QPalette::PlaceholderText, QColor(0x8a, 0x8a, 0x90));
    dark.setColor(QPalette::Highlight, QColor(0xff, 0x5c, 0x1f));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(0x70, 0x70, 0x76));
    return dark;
}

template <typename Condition> void runUntil(Condition condition, int atMostMs) {
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < atMostMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QStringList args = app.arguments().mid(1);
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: sizeloom_screenshot OUT.png [--dark] [--size WxH] "
                             "[--stop-after MS] [--open NAME]... [--lang CODE] FOLDER\n");
        return 2;
    }
    const QString out = args.takeFirst();
    const QByteArray folder = absolutePath(QFile::encodeName(args.takeLast()));
    QSize size(1000, 680);
    int stopAfter = -1;
    QList<QByteArray> toOpen;
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args[i] == "--dark")
            QApplication::setPalette(darkPalette());
        else if (args[i] == "--size" && i + 1 < args.size()) {
            const QStringList wh = args[++i].split('x');
            size = QSize(wh.value(0).toInt(), wh.value(1).toInt());
        } else if (args[i] == "--stop-after" && i + 1 < args.size())
            stopAfter = args[++i].toInt();
        else if (args[i] == "--open" && i + 1 < args.size())
            toOpen << QFile::encodeName(args[++i]);
        else if (args[i] == "--lang" && i + 1 < args.size()) {
            if (const auto lang = LangInfo::fromRawValue(args[++i]))
                Loc::current = *lang;
        }
    }

    SizeTree tree;
    MainWindow window(tree);
    window.resize(size);
    window.show();
    window.openFolder(folder);
    if (stopAfter >= 0) {
        runUntil([] { return false; }, stopAfter);
        tree.stop();
    } else {
        runUntil([&] { return !tree.isWalking() && tree.index()->isMeasured(tree.root()); },
                 120000);
    }
    runUntil([] { return false; }, 300);
    QModelIndex at = window.model().index(0, 0);
    for (const QByteArray& name : toOpen) {
        for (int row = 0; row < window.model().rowCount(at); ++row) {
            const QModelIndex child = window.model().index(row, 0, at);
            if (tree.index()->name(window.model().entryAt(child)) == name) {
                window.outline().expand(child);
                at = child;
                break;
            }
        }
        runUntil([] { return false; }, 200);
    }
    runUntil([] { return false; }, 300);
    return window.grab().save(out) ? 0 : 1;
}
