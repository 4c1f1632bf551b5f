// What the tests of the structure tree share: items that count what is asked of them, a shown tree
// that plays the window's part, and gestures sent as real events.
#pragma once

#include "DataMaker.h"
#include "DataPoint.h"
#include "Kinds.h"
#include "Space.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "items/Building.h"
#include "items/HostItem.h"
#include "tree/TreeView.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tree_tools {

using TAVIK::Compound;
using TAVIK::DataMaker;

/// What was handed to spies: "name on" or "name off", in order.
inline QStringList& handedOver() {
    static QStringList calls;
    return calls;
}

inline QStringList takeHandedOver() {
    return std::exchange(handedOver(), {});
}

/// An item outside of the data space that writes down what is selected through it. Identity and
/// colour are those of a real item.
template <class Kind> class Spy : public Kind {
public:
    explicit Spy(const std::string& name)
        : m_name(name), m_real(memory_host::makeDetached(name, "Atom")) {}
    ~Spy() override { DataMaker::Destroy(m_real); }

    /// Makes `child` the last child, whatever its id.
    void hold(Compound* child) { m_children.push_back(child); }

    std::string GetName() const override { return m_name; }
    std::string GetType() const override { return "Spy"; }
    TAVIK::Vertex GetPosition() const override { return {}; }
    void SetSelected(bool on) override {
        handedOver() << QString::fromStdString(m_name + (on ? " on" : " off"));
        mark(on);
    }
    bool IsSelected() const override {
        return m_children.empty()
                   ? m_selected
                   : std::all_of(m_children.begin(), m_children.end(),
                                 [](const Compound* c) { return !c || c->IsSelected(); });
    }
    bool HasSelected() const override {
        return m_children.empty()
                   ? m_selected
                   : std::any_of(m_children.begin(), m_children.end(),
                                 [](const Compound* c) { return c && c->HasSelected(); });
    }
    void SetVisible(bool) override {}
    bool IsVisible() const override { return true; }
    bool HasChildren() const override { return !m_children.empty(); }
    Compound** ChildBegin() override { return m_children.data(); }
    Compound** ChildEnd() override { return m_children.data() + m_children.size(); }
    void FirstModel() override {}
    void PrevModel() override {}
    void NextModel() override {}

    void mark(bool on) {
        m_selected = on;
        for (Compound* child : m_children)
            if (auto* holder = dynamic_cast<Spy<TAVIK::Composite>*>(child))
                holder->mark(on);
            else if (auto* leaf = dynamic_cast<Spy<Compound>*>(child))
                leaf->mark(on);
    }

    std::vector<Compound*> m_children;

private:
    TAVIK::HostItem& hostItem() override { return TAVIK::HostItem::of(m_real); }

    std::string m_name;
    Compound* m_real;
    bool m_selected = false;
};

using SpyHolder = Spy<TAVIK::Composite>;
using SpyLeaf = Spy<Compound>;

/// A molecule of spies: "M" holds "R1" to "R5", each of which holds "R1a" and "R1b" and so on.
struct SpyMolecule {
    SpyMolecule() {
        for (int r = 0; r != 5; ++r) {
            const std::string name = "R" + std::to_string(r + 1);
            residues.push_back(std::make_unique<SpyHolder>(name));
            molecule.hold(residues.back().get());
            for (const char* suffix : {"a", "b"}) {
                atoms.push_back(std::make_unique<SpyLeaf>(name + suffix));
                residues.back()->hold(atoms.back().get());
            }
        }
    }
    SpyHolder molecule{"M"};
    std::vector<std::unique_ptr<SpyHolder>> residues;
    std::vector<std::unique_ptr<SpyLeaf>> atoms;
};

/// A test that fails when something was handed to spies and not taken.
class SpyTestCase : public test_support::TestCase {
protected:
    void cleanup() override {
        QCOMPARE(takeHandedOver(), QStringList());
        TestCase::cleanup();
    }
};

/// Counts what a model tells, while a model tester checks that it is true.
class ModelWatch {
public:
    explicit ModelWatch(QAbstractItemModel* model)
        : m_tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest),
          inserted(model, &QAbstractItemModel::rowsInserted),
          removed(model, &QAbstractItemModel::rowsRemoved),
          layouts(model, &QAbstractItemModel::layoutChanged),
          resets(model, &QAbstractItemModel::modelReset) {}

private:
    QAbstractItemModelTester m_tester;

public:
    QSignalSpy inserted;
    QSignalSpy removed;
    QSignalSpy layouts;
    QSignalSpy resets;
};

/// A tree on screen that hands selections to the host and follows the host's changes, as the window
/// does.
class ShownTree : public TreeView, public Subscriber {
public:
    ShownTree() : watch(rows()), selections(this, qOverload<>(&TreeView::selectionChanged)) {
        resize(420, 500);
        show();
        QObject::connect(this, qOverload<>(&TreeView::selectionChanged), this, [this] {
            if (handsOver && firstChild())
                handOver();
        });
        QObject::connect(this, &TreeView::killBranch, this,
                         [this](TreeItem* row) { victims.push_back(row); });
    }

    /// Shows `top`, opened, as a press on a list entry does.
    TreeItem* populate(Compound* top) {
        clear();
        auto* const row = new TreeItem(this, top);
        setCurrentItem(row);
        if (top->HasChildren()) {
            row->setOpen(true);
            row->commAdd();
        }
        triggerUpdate();
        return row;
    }

    void triggerUpdate() override {
        ++updates;
        TreeView::triggerUpdate();
    }

    void handOver() {
        const DataPoint<TAVIK::Space> guard(this, TAVIK::Space::instance());
        if (!guard.m_good)
            return;
        firstChild()->CheckSelection();
        firstChild()->UpdateSelection();
        triggerUpdate();
    }

    void commUpdate() override {
        ++hostUpdates;
        if (firstChild())
            firstChild()->UpdateSelection();
        triggerUpdate();
    }
    void commAdd() override {
        if (firstChild())
            firstChild()->commAdd();
        triggerUpdate();
    }
    void commDelete() override {
        clear();
        triggerUpdate();
    }

    /// The point in the middle of a cell, in viewport coordinates.
    QPoint cell(const TreeItem* row, int column) const {
        return visualRect(rows()->indexOf(row, column)).center();
    }
    /// The middle of the branch mark.
    QPoint mark(const TreeItem* row) const {
        return {indentation() * row->depth() - indentation() / 2 - header()->offset(),
                cell(row, 0).y()};
    }
    QPoint below() const {
        const TreeItem* last = firstChild();
        while (last->itemBelow())
            last = last->itemBelow();
        return cell(last, 0) + QPoint(0, 2 * visualRect(rows()->indexOf(last)).height());
    }

    void press(const QPoint& at, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(viewport(), Qt::LeftButton, modifiers, at);
    }
    void release(const QPoint& at, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseRelease(viewport(), Qt::LeftButton, modifiers, at);
    }
    void click(const TreeItem* row, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(viewport(), Qt::LeftButton, modifiers, cell(row, 0));
    }
    /// What the window system makes of two clicks in quick succession.
    void doubleClick(const QPoint& at, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(viewport(), button, {}, at);
        QMouseEvent second(QEvent::MouseButtonDblClick, at, viewport()->mapToGlobal(at), button,
                           button, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &second);
        QTest::mouseRelease(viewport(), button, {}, at);
    }
    void clickCell(const TreeItem* row, int column, Qt::MouseButton button) {
        QTest::mouseClick(viewport(), button, {}, cell(row, column));
    }
    /// Moves with the left button held.
    void drag(const QPoint& to) {
        QMouseEvent move(QEvent::MouseMove, to, viewport()->mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &move);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(this, key, modifiers);
    }

    /// The names of the selected rows, top to bottom, closed branches included.
    QStringList selected() const {
        QStringList names;
        for (TreeItemIterator it(this); it.current(); ++it)
            if (it.current()->isSelected())
                names << it.current()->text(0);
        return names;
    }
    QStringList dirty() const {
        QStringList names;
        for (TreeItemIterator it(this); it.current(); ++it)
            if (it.current()->isDirty())
                names << it.current()->text(0);
        return names;
    }
    /// The first row of that name.
    TreeItem* row(const char* name) const {
        for (TreeItemIterator it(this); it.current(); ++it)
            if (it.current()->text(0) == QLatin1String(name))
                return it.current();
        return nullptr;
    }
    QString current() const { return currentItem() ? currentItem()->text(0) : QString(); }
    int takeSelections() {
        const auto count = static_cast<int>(selections.count());
        selections.clear();
        return count;
    }

    ModelWatch watch;
    QSignalSpy selections;
    std::vector<TreeItem*> victims;
    bool handsOver = true;
    int updates = 0;
    int hostUpdates = 0;
};

/// A molecule in the data space: "M" holds the residues "R1", "R2" ..., each with the atoms "R1a",
/// "R1b" ... as many as given.
inline Compound* makeMolecule(int residues, int atoms) {
    Compound* molecule = DataMaker::makeCore(TAVIK::Space::instance(), "M", "Molecule");
    for (int r = 1; r <= residues; ++r) {
        const std::string name = "R" + std::to_string(r);
        Compound* residue = DataMaker::makeCore(molecule, name, "Residue");
        for (int a = 0; a != atoms; ++a)
            DataMaker::makeCore(residue, name + static_cast<char>('a' + a), "Atom");
    }
    return molecule;
}

inline Compound* childOf(Compound* composite, int index) {
    return composite->ChildBegin()[index];
}

inline Compound* space() {
    return TAVIK::Space::instance();
}

/// The names of all rows, closed branches included, and of those on screen, top to bottom.
inline QStringList allNames(const TreeView& tree) {
    QStringList names;
    for (TreeItemIterator it(&tree); it.current(); ++it)
        names << it.current()->text(0);
    return names;
}
inline QStringList shownNames(const TreeView& tree) {
    QStringList names;
    for (const TreeItem* row = tree.firstChild(); row; row = row->itemBelow())
        names << row->text(0);
    return names;
}

inline QRect cellRect(const TreeView& tree, const TreeItem* row, int column) {
    return tree.visualRect(tree.rows()->indexOf(row, column));
}

} // namespace tree_tools
