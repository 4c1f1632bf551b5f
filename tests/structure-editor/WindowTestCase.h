// What the tests of the window start from: a window for each test function.
#pragma once

#include "TestSupport.h"
#include "WindowTools.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "tree/TreeView.h"
#include "window/Vuxo.h"

#include <QAbstractItemModelTester>

#include <memory>

namespace window_tools {

/// A test of one window, which is closed after each function; the data are in order then.
class WindowTestCase : public test_support::TestCase {
protected:
    /// Opens the window, with nothing in the tree.
    void openWindow() {
        m_window = std::make_unique<Vuxo>();
        m_window->show();
    }
    /// Opens it, and shows entry `entry` in the tree.
    void showWindow(int entry = 0) {
        openWindow();
        clickEntry(*m_window, entry);
    }
    /// Has a model tester look at the tree's rows, until the window goes.
    void watchRows() {
        m_tester = std::make_unique<QAbstractItemModelTester>(
            treeOf(*m_window)->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    void cleanup() override {
        m_tester.reset();
        m_window.reset();
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        TestCase::cleanup();
    }

    std::unique_ptr<Vuxo> m_window;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

} // namespace window_tools
