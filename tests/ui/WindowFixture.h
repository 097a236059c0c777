#pragma once

// A controller with its real window, offscreen, on a clean settings store.
#include "app/AppController.h"
#include "ui/TreeModel.h"
#include "ui/TreeOutlineView.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>
#include <memory>

struct WindowFixture {
    std::unique_ptr<AppController> controller;
    std::unique_ptr<QAbstractItemModelTester> tester;

    // The model tester walks (and so lists) every folder it can; tests of what is
    // left unlisted go without it.
    explicit WindowFixture(bool withModelTester = true) {
        QStandardPaths::setTestModeEnabled(true);
        Loc::current = Lang::en;
        controller = std::make_unique<AppController>();
        controller->buildWindow();
        if (withModelTester)
            tester = std::make_unique<QAbstractItemModelTester>(
                controller->model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
    ~WindowFixture() {
        tester.reset();
        delete controller->window;
    }

    AppController& c() { return *controller; }
    TreeModel& model() { return *controller->model; }

    // Names of a folder's rows, in the order the outline shows them.
    QList<QByteArray> rowNames(const QModelIndex& folder) {
        QList<QByteArray> names;
        for (int row = 0; row < model().rowCount(folder); ++row)
            names << lastPathComponent(model().nodeAt(model().index(row, 0, folder))->url);
        return names;
    }
    QModelIndex rootIndex() { return model().index(0, 0); }
    QModelIndex childNamed(const QModelIndex& folder, const QByteArray& name) {
        for (int row = 0; row < model().rowCount(folder); ++row) {
            const QModelIndex index = model().index(row, 0, folder);
            if (lastPathComponent(model().nodeAt(index)->url) == name)
                return index;
        }
        return {};
    }
    bool rootTotalShown() { return controller->status->text().contains(QStringLiteral("Total")); }
};
