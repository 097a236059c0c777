// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// A size tree and its main window, shown offscreen as at launch, on a clean settings
// store; the window's parts as its public interface gives them.
#include "actions/FileActions.h"
#include "core/SizeTree.h"
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
    const NodePtr& root() const { return tree.root(); }
    void openPath(const QByteArray& folder) { window->openFolder(folder); }
    QModelIndex rootIndex() { return model().index(0, 0); }
    QList<QByteArray> rowNames(const QModelIndex& folder) {
        QList<QByteArray> names;
        for (int row = 0; row < model().rowCount(folder); ++row)
            names << lastPathComponent(model().nodeAt(model().index(row, 0, folder))->url);
        return names;
    }
    QModelIndex childNamed(const QModelIndex& folder, const QByteArray& name) {
        const int row = int(rowNames(folder).indexOf(name));
        return row < 0 ? QModelIndex() : model().index(row, 0, folder);
    }
    // Wait (with the event loop running) until the root's total and its level are in,
    // or until a folder is listed and its level measured (an outline in the middle of
    // laying out lists an opened folder only afterwards).
    bool settled() {
        return QTest::qWaitFor([&] {
            return status->text().contains(QStringLiteral("Total")) && root()->pending == 0;
        });
    }
    // The window shown on the folder, its level and total in.
    bool openAt(const QByteArray& folder) {
        window->show();
        openPath(folder);
        return settled();
    }
    // The item the next action is asked for: the root's child of that name.
    NodePtr picked;
    bool pick(const QByteArray& name) {
        picked = model().nodeAt(childNamed(rootIndex(), name));
        return picked != nullptr;
    }
    bool listed(const NodePtr& folder) {
        return QTest::qWaitFor([&] { return folder->children && folder->pending == 0; });
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
