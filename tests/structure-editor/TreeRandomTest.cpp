// Random gestures on a random tree, with changes from outside and refused guards in between,
// against the plain model, which goes through lists of all rows at every step.
#include "CompareRows.h"
#include "HostTwin.h"
#include "TreeTools.h"

#include "DataAdder.h"
#include "items/SpaceLock.h"

#include <random>

using namespace tree_tools;

namespace {

class Run {
public:
    explicit Run(unsigned int seed) : m_random(seed) {
        Compound* const molecule = makeRandom();
        m_rows.populate(plain::enterItem(molecule, m_host, m_host.space()));
        m_tree.resize(420, 3000);
        m_tree.populate(molecule);
        QApplication::processEvents();
    }

    void step() {
        switch (pick(20)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return clickOrDrag();
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
        case 9:
            return pressKey();
        case 10:
        case 11:
            return clickMark();
        case 12:
            return pressBelow();
        case 13:
            return rightClick();
        case 14:
            m_rows.descending = !m_rows.descending;
            m_tree.rows()->sort(0, m_rows.descending ? Qt::DescendingOrder : Qt::AscendingOrder);
            return;
        case 15:
            return add();
        case 16:
            return changeOutside();
        case 17:
            if (m_lock)
                m_lock.reset();
            else
                m_lock = std::make_unique<memory_host::SpaceLock>();
            return;
        default:
            return doubleClick();
        }
    }

    void check() {
        plain::Comparison all;
        plain::compareItem(all, *m_host.space(), TAVIK::Space::instance());
        plain::compareTree(all, m_rows, m_tree);
        QCOMPARE(all.lines.join(u'\n'), QString());
        QCOMPARE(m_tree.takeSelections(), std::exchange(m_told, 0));
        QCOMPARE(m_tree.watch.resets.count(), 0);
        // What the screen shows is what the rows say.
        int y = -1;
        for (const plain::Row* row : m_rows.shown()) {
            const QRect rect = m_tree.visualRect(m_tree.rows()->indexOf(real(row)));
            QVERIFY(rect.isValid() && rect.top() > y);
            y = rect.top();
        }
    }

private:
    int pick(int below) { return static_cast<int>(m_random() % static_cast<unsigned int>(below)); }

    Compound* makeRandom() {
        Compound* molecule =
            DataMaker::makeCore(TAVIK::Space::instance(), "M", pick(2) ? "Molecule" : "Composite");
        Compound* residues = DataMaker::makeCore(molecule, "Groups", "Composite");
        std::vector<Compound*> atoms;
        for (int r = 0, count = 1 + pick(5); r != count; ++r) {
            Compound* residue = DataMaker::makeCore(residues, "R", "Residue");
            for (int g = 0, groups = pick(3); g != groups; ++g) {
                Compound* group = DataMaker::makeCore(residue, "G", "Group");
                for (int a = 0, inGroup = 1 + pick(3); a != inGroup; ++a)
                    atoms.push_back(DataMaker::makeCore(group, "a", "Atom"));
            }
            for (int a = 0, inResidue = 1 + pick(3); a != inResidue; ++a)
                atoms.push_back(DataMaker::makeCore(residue, "a", "Atom"));
        }
        Compound* bonds = DataMaker::makeCore(molecule, "Bonds", "Composite");
        for (std::size_t i = 1; i < atoms.size(); ++i)
            memory_host::addBond(bonds, atoms[i - 1], atoms[i]);
        return molecule;
    }

    TreeItem* real(const plain::Row* row) const {
        for (TreeItemIterator it(&m_tree); it.current(); ++it)
            if (it.current()->compound()->GetId() == row->item->id)
                return it.current();
        return nullptr;
    }
    plain::Row* pickFrom(const plain::Rows& rows) {
        return rows[static_cast<std::size_t>(pick(static_cast<int>(rows.size())))];
    }
    plain::Row* shownRow() { return pickFrom(m_rows.shown()); }
    plain::Row* anyRow() { return pickFrom(m_rows.all()); }
    // What the user has selected goes to the host, unless that refuses it.
    void tellIf(bool selectionChanges) {
        if (!selectionChanges)
            return;
        ++m_told;
        if (m_lock)
            return;
        m_rows.handOver();
        m_rows.update();
    }
    Qt::KeyboardModifiers modifiers() {
        static const Qt::KeyboardModifiers some[] = {{},
                                                     {},
                                                     Qt::ShiftModifier,
                                                     Qt::ControlModifier,
                                                     Qt::ShiftModifier | Qt::ControlModifier};
        return some[pick(5)];
    }
    QPoint place(const plain::Row* row) { return m_tree.cell(real(row), pick(4)); }

    void clickOrDrag() {
        const Qt::KeyboardModifiers held = modifiers();
        plain::Row* row = shownRow();
        m_tree.press(place(row), held);
        tellIf(m_rows.press(row, held));
        for (int moves = pick(2) ? pick(6) : 0; moves > 0; --moves) {
            row = shownRow();
            m_tree.drag(place(row));
            for (plain::Row* crossed : m_rows.crossed(row, true))
                tellIf(m_rows.dragOver(crossed));
        }
        m_tree.release(place(row), held);
        tellIf(m_rows.release(row));
    }
    void doubleClick() {
        plain::Row* row = shownRow();
        m_tree.doubleClick(place(row));
        tellIf(m_rows.press(row, {}));
        tellIf(m_rows.release(row));
        if (row->open || !row->children.empty())
            m_rows.setOpen(row, !row->open);
    }
    void pressKey() {
        static const Qt::Key keys[] = {Qt::Key_Up,   Qt::Key_Down, Qt::Key_Home,
                                       Qt::Key_End,  Qt::Key_Left, Qt::Key_Right,
                                       Qt::Key_Down, Qt::Key_Up,   Qt::Key_Space};
        const Qt::Key key = pick(12) ? keys[pick(9)] : Qt::Key_A;
        const Qt::KeyboardModifiers held =
            key == Qt::Key_A ? Qt::ControlModifier
                             : (key == Qt::Key_Space ? Qt::NoModifier : modifiers());
        m_tree.key(key, held);
        tellIf(m_rows.key(key, held));
    }
    void clickMark() {
        plain::Row* row = shownRow();
        if (!row->parent || row->children.empty())
            return;
        QTest::mouseClick(m_tree.viewport(), Qt::LeftButton, {}, m_tree.mark(real(row)));
        m_rows.pressMark(row, {});
    }
    void pressBelow() {
        const Qt::KeyboardModifiers held = modifiers();
        QTest::mouseClick(m_tree.viewport(), Qt::LeftButton, held, m_tree.below());
        tellIf(m_rows.pressBelow(Qt::LeftButton, held));
        tellIf(m_rows.release(nullptr));
    }
    void rightClick() {
        plain::Row* row = shownRow();
        const int column = 2 + pick(2);
        m_tree.clickCell(real(row), column, Qt::RightButton);
        m_rows.pressOther();
        m_rows.current = row;
        if (m_lock) {
            QCOMPARE(test_support::TestCase::takeMessages(), QStringList("Cannot update CDB!"));
            return;
        }
        const plain::Item& item = *row->item;
        selectInHost(row, column == 2 ? !plain::Host::isSelected(item)
                                      : !plain::Host::hasSelected(item));
    }
    void selectInHost(const plain::Row* row, bool on) {
        plain::Host::setSelected(*row->item, on);
        m_rows.update();
    }
    void changeOutside() {
        const plain::Row* row = anyRow();
        const bool on = pick(2) != 0;
        Compound* const item = real(row)->compound();
        const DataPoint<Compound> guard(nullptr, item);
        if (!guard.m_good)
            return;
        item->SetSelected(on);
        selectInHost(row, on);
    }
    void add() {
        const plain::Row* row = anyRow();
        if (!row->item->isComposite())
            return;
        m_tree.watch.inserted.clear();
        Compound* const holder = real(row)->compound();
        {
            const DataAdder<Compound> guard(nullptr, holder);
            if (!guard.m_good)
                return;
            Compound* composite = DataMaker::makeCore(holder, "N", "Composite");
            for (int i = 0; i != 3; ++i)
                DataMaker::makeCore(composite, "n", "Atom");
            plain::enterItem(composite, m_host, row->item);
        }
        QCOMPARE(m_rows.addMissing(), 4);
        QCOMPARE(m_tree.watch.inserted.count(), 1);
    }

    std::mt19937 m_random;
    plain::Host m_host;
    plain::Tree m_rows;
    int m_told = 0; ///< how often the selection was handed over or refused
    ShownTree m_tree;
    std::unique_ptr<memory_host::SpaceLock> m_lock;
};

} // namespace

class TreeRandomTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void anyGesturesDoWhatThePlainModelDoes_data() {
        QTest::addColumn<unsigned int>("seed");
        for (unsigned int seed = 1; seed <= 60; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }
    void anyGesturesDoWhatThePlainModelDoes() {
        QFETCH(unsigned int, seed);
        Run run(seed);
        for (int step = 0; step != 120 && !QTest::currentTestFailed(); ++step) {
            run.step();
            run.check();
        }
    }
};

REGISTER_TEST(TreeRandomTest)
#include "TreeRandomTest.moc"
