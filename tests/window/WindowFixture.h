#pragma once

// A controller with its real window, offscreen, on a clean settings store.
#include "actions/FileActions.h"
#include "app/AppController.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <memory>

struct WindowFixture {
    AppController c;
    std::unique_ptr<QAbstractItemModelTester> tester;

    // The model tester walks (and so lists) every folder it can; tests of what is
    // left unlisted go without it.
    explicit WindowFixture(bool withModelTester = true) {
        QStandardPaths::setTestModeEnabled(true);
        Loc::current = Lang::en;
        c.buildWindow();
        outcomes = std::make_unique<QSignalSpy>(c.actions, &FileActions::finished);
        if (withModelTester)
            tester = std::make_unique<QAbstractItemModelTester>(
                c.model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
    ~WindowFixture() {
        tester.reset();
        delete c.window;
    }

    TreeModel& model() { return *c.model; }
    FileActions& actions() { return *c.actions; }
    // The item the next action is asked for.
    NodePtr picked;
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
            return c.status->text().contains(QStringLiteral("Total")) && c.rootNode->pending == 0;
        });
    }
    // The window shown on the folder, its level and total in.
    bool openAt(const QByteArray& folder) {
        c.window->show();
        c.openPath(folder);
        return settled();
    }
    // The root's child of that name as the menu's item, as a right-click on it does.
    bool pick(const QByteArray& name) {
        picked = model().nodeAt(childNamed(rootIndex(), name));
        return picked != nullptr;
    }
    bool listed(const NodePtr& folder) {
        return QTest::qWaitFor([&] { return folder->children && folder->pending == 0; });
    }
};
