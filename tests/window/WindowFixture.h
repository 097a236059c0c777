// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// A size tree and its main window, shown offscreen as at launch, on a clean settings
// store; the window's parts as its public interface gives them.
#include "actions/FileActions.h"
#include "core/LevelOrder.h"
#include "core/SizeTree.h"
#include "platform/Paths.h"
#include "text/Lang.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"
#include "views/VolumesPanel.h"
#include "window/LanguageSwitch.h"
#include "window/MainWindow.h"

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <memory>

// Speaks the language from now on, every window told at once.
inline void speak(Lang lang) {
    switchLanguage(lang);
    // The application hands the event on to the windows, which take it next.
    for (int pass = 0; pass < 2; ++pass)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
}

struct WindowFixture {
    SizeTree tree;
    std::unique_ptr<MainWindow> owned;
    MainWindow* window;
    TreeOutlineView* outline;
    QLabel* status;
    QLineEdit* pathField;
    QPushButton* upButton;
    FileActions* actions;
    std::unique_ptr<QAbstractItemModelTester> tester;

    // The model tester walks (and so lists) every folder it can; tests of what is
    // left unlisted go without it.
    explicit WindowFixture(bool withModelTester = true)
        : owned(prepared(tree)), window(owned.get()), outline(&window->outline()),
          status(&window->statusLine()), pathField(&window->pathField()),
          upButton(window->findChild<QPushButton*>(QStringLiteral("upButton"))),
          actions(&window->actions()) {
        outcomes = std::make_unique<QSignalSpy>(actions, &FileActions::finished);
        // As the program shows it at launch.
        window->restoreFrame();
        window->bringToFront();
        if (withModelTester)
            tester = std::make_unique<QAbstractItemModelTester>(
                &model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
    // Measuring and the actions get two seconds in all, as when the program quits.
    ~WindowFixture() {
        tester.reset();
        const QDeadlineTimer quitBy(2000);
        actions->stopJobs(quitBy);
        tree.setQuitDeadline(quitBy);
    }

    static std::unique_ptr<MainWindow> prepared(SizeTree& tree) {
        QStandardPaths::setTestModeEnabled(true);
        Loc::current = Lang::en;
        return std::make_unique<MainWindow>(tree);
    }

    TreeModel& model() { return window->model(); }
    const SizeIndex& index() const { return *tree.index(); }
    EntryId rootId() const { return tree.root(); }
    QByteArray rootPath() const { return tree.rootPath(); }
    EntryId entryAt(const QModelIndex& index) { return model().entryAt(index); }
    ItemRef itemAt(const QModelIndex& index) { return model().itemAt(index); }
    void openPath(const QByteArray& folder) { window->openFolder(folder); }
    QModelIndex rootIndex() { return model().index(0, 0); }
    QList<QByteArray> rowNames(const QModelIndex& folder) {
        QList<QByteArray> names;
        for (int row = 0; row < model().rowCount(folder); ++row)
            names << index().name(entryAt(model().index(row, 0, folder)));
        return names;
    }
    QModelIndex childNamed(const QModelIndex& folder, const QByteArray& name) {
        const int row = int(rowNames(folder).indexOf(name));
        return row < 0 ? QModelIndex() : model().index(row, 0, folder);
    }
    // The folder's rows are shown largest first: all of them, or the first page.
    bool inOrder(EntryId folder) {
        const QModelIndex at = model().indexOf(folder);
        const std::vector<EntryId> order = largestFirst(index(), folder);
        const int rows = model().rowCount(at);
        if (rows < int(std::min(order.size(), TreeModel::kRowsPerPage)) || rows > int(order.size()))
            return false;
        for (int row = 0; row < rows; ++row)
            if (entryAt(model().index(row, 0, at)) != order[size_t(row)])
                return false;
        return true;
    }
    // Wait (with the event loop running) until the opened folder is measured, every walk
    // is over, its level is in order and the window says so.
    bool settled() {
        return QTest::qWaitFor(
            [&] {
                return tree.index() && index().isMeasured(rootId()) && !tree.isWalking() &&
                       inOrder(rootId()) && status->text().contains(QStringLiteral("Total"));
            },
            30000);
    }
    // The window shown on the folder, its level and total in.
    bool openAt(const QByteArray& folder) {
        window->show();
        openPath(folder);
        return settled();
    }
    // The item the next action is asked for: the root's child of that name.
    ItemRef picked;
    bool pick(const QByteArray& name) {
        picked = itemAt(childNamed(rootIndex(), name));
        return picked.isValid();
    }
    // The folder is measured, no walk is on, and its rows, if shown, are in order.
    bool listed(EntryId folder) {
        return QTest::qWaitFor([&] {
            return index().isMeasured(folder) && !tree.isWalking() &&
                   (!model().hasRows(folder) || inOrder(folder));
        });
    }
    // The folder's row opened in the outline, and its rows in, in order.
    bool openRow(const QModelIndex& folder) {
        outline->expand(folder);
        const EntryId id = entryAt(folder);
        return QTest::qWaitFor([&] { return model().hasRows(id); }) && listed(id);
    }
    // What actions came to, as they were reported.
    std::unique_ptr<QSignalSpy> outcomes;
    qsizetype outcomesSeen = 0;
    // The next outcome of an action that ended (one that began goes by), once the
    // window has taken it in.
    std::optional<ActionOutcome> nextOutcome() {
        for (;;) {
            if (!QTest::qWaitFor([&] { return outcomes->count() > outcomesSeen; }, 60000))
                return std::nullopt;
            const auto outcome = outcomes->at(outcomesSeen++).first().value<ActionOutcome>();
            if (!outcome.underWay)
                return outcome;
        }
    }
};
