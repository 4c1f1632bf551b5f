// Random gestures on a random tree, with changes from outside and refused guards in between,
// against a plain model that goes through lists of all rows at every step.
#include "TreeTools.h"

#include "DataAdder.h"

#include <random>

using namespace tree_tools;

namespace {

// The tree as a list of lists, with the rules written down in the simplest way.
class Plain {
public:
    struct Node {
        Compound* item = nullptr;
        Node* parent = nullptr;
        std::vector<std::unique_ptr<Node>> children;
        bool selected = false; // the row's mark
        bool dirty = false;
        bool open = false;
        bool host = false; // the host's mark of a leaf
    };
    using Nodes = std::vector<Node*>;

    explicit Plain(Compound* top) {
        m_top.item = top;
        m_top.open = true;
        addMissing(m_top);
        current = &m_top;
    }

    Node* top() { return &m_top; }

    // All rows, or those on screen, in the order shown.
    Nodes all() { return list(true); }
    Nodes shown() { return list(false); }

    bool hostSelected(const Node& node) const {
        Nodes leaves, atoms;
        collect(const_cast<Node&>(node), leaves, atoms);
        const Nodes& counted = atoms.empty() ? leaves : atoms;
        return std::all_of(counted.begin(), counted.end(),
                           [](const Node* leaf) { return leaf->host; });
    }
    bool hostHasSelected(Node& node) const {
        Nodes leaves, atoms;
        collect(node, leaves, atoms);
        return std::any_of(leaves.begin(), leaves.end(),
                           [](const Node* leaf) { return leaf->host; });
    }
    void hostSelect(Node& node, bool on) {
        Nodes leaves, atoms;
        collect(node, leaves, atoms);
        for (Node* leaf : leaves)
            leaf->host = on;
    }
    void update() {
        for (Node* node : all())
            node->selected = hostSelected(*node);
    }

    void press(Node* node, Qt::KeyboardModifiers modifiers) {
        Node* const old = current;
        current = node;
        pressed = nullptr;
        if (modifiers & Qt::ShiftModifier) {
            if (!anchor)
                return;
            range(node, old);
        } else {
            anchor = node;
            if (modifiers & Qt::ControlModifier) {
                set(node, !node->selected);
            } else if (node->selected) {
                pressed = node;
                return;
            } else {
                only(node);
            }
        }
        tell();
    }
    void pressNothing(Qt::KeyboardModifiers modifiers) {
        pressed = nullptr;
        if (!(modifiers & Qt::ControlModifier) && setAll(false))
            tell();
    }
    // Over each row on the way.
    void drag(Node* node) {
        const Nodes rows = shown();
        while (node != current) {
            auto at = std::find(rows.begin(), rows.end(), current);
            Node* const next = at < std::find(rows.begin(), rows.end(), node) ? *++at : *--at;
            if (anchor)
                range(next, current);
            current = next;
            if (anchor)
                tell();
        }
    }
    void release(Node* node) {
        if (node && node == std::exchange(pressed, nullptr)) {
            only(node);
            tell();
        }
    }
    void open(Node* node, bool on) {
        if (node->open == on)
            return;
        node->open = on;
        if (on) {
            current = node;
            return;
        }
        for (const Node* above = current->parent; above; above = above->parent)
            if (above == node)
                current = node;
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
        const Nodes rows = shown();
        const auto at = std::find(rows.begin(), rows.end(), current);
        Node* to = nullptr;
        switch (key) {
        case Qt::Key_Up:
            to = at == rows.begin() ? nullptr : *std::prev(at);
            break;
        case Qt::Key_Down:
            to = std::next(at) == rows.end() ? nullptr : *std::next(at);
            break;
        case Qt::Key_Home:
            to = rows.front();
            break;
        case Qt::Key_End:
            to = rows.back();
            break;
        case Qt::Key_Left:
            if (current->open)
                open(to = current, false);
            else
                to = current->parent;
            break;
        case Qt::Key_Right:
            if (!current->open && !current->children.empty())
                open(to = current, true);
            else
                to = current->children.empty() ? nullptr : *std::next(at);
            break;
        case Qt::Key_Space:
            set(current, !current->selected);
            anchor = current;
            return tell();
        case Qt::Key_A:
            if (setAll(true))
                tell();
            return;
        default:
            break;
        }
        if (!to)
            return;
        current = to;
        if (!anchor)
            anchor = to;
        if (modifiers & Qt::ShiftModifier) {
            if (!(modifiers & Qt::ControlModifier))
                setAll(false);
            Node* from = anchor;
            for (Node* above = anchor->parent; above; above = above->parent)
                if (!above->open)
                    from = above;
            const Nodes now = shown();
            const auto [first, last] = between(now, from, to);
            for (std::size_t i = first; i <= last; ++i)
                set(now[i], true);
            leaveAbove(now[first]);
        } else {
            anchor = to;
            if (modifiers & Qt::ControlModifier)
                return;
            only(to);
        }
        tell();
    }

    // Adds nodes for new items; returns how many.
    int addMissing(Node& node) {
        int added = 0;
        for (auto** it = node.item->ChildBegin(); it != node.item->ChildEnd(); ++it) {
            const auto found = std::find_if(node.children.begin(), node.children.end(),
                                            [&](const auto& child) { return child->item == *it; });
            if (found != node.children.end()) {
                added += addMissing(**found);
                continue;
            }
            auto child = std::make_unique<Node>();
            child->item = *it;
            child->parent = &node;
            added += 1 + addMissing(*child);
            node.children.push_back(std::move(child));
        }
        return added;
    }

    Node* current = nullptr;
    Node* anchor = nullptr;
    Node* pressed = nullptr;
    bool descending = false;
    bool refused = false;
    int told = 0;

private:
    Nodes list(bool closedToo) {
        Nodes rows;
        const std::function<void(Node&)> visit = [&](Node& node) {
            rows.push_back(&node);
            if (!closedToo && !node.open)
                return;
            for (std::size_t i = 0; i != node.children.size(); ++i)
                visit(*node.children[descending ? node.children.size() - 1 - i : i]);
        };
        visit(m_top);
        return rows;
    }
    static void collect(Node& node, Nodes& leaves, Nodes& atoms) {
        if (node.children.empty()) {
            leaves.push_back(&node);
            if (dynamic_cast<TAVIK::Atom*>(node.item))
                atoms.push_back(&node);
        }
        for (const auto& child : node.children)
            collect(*child, leaves, atoms);
    }
    static std::pair<std::size_t, std::size_t> between(const Nodes& rows, Node* a, Node* b) {
        const auto place = [&](Node* node) {
            return static_cast<std::size_t>(std::find(rows.begin(), rows.end(), node) -
                                            rows.begin());
        };
        return std::minmax(place(a), place(b));
    }
    void set(Node* node, bool on) {
        if (node->selected == on)
            return;
        node->selected = on;
        node->dirty = true;
    }
    bool setAll(bool on) {
        bool changed = false;
        for (Node* node : all()) {
            changed = changed || node->selected != on;
            set(node, on);
        }
        return changed;
    }
    void only(Node* node) {
        setAll(false);
        set(node, true);
        leaveAbove(node);
    }
    // What holds a row that stays selected does not go to the host as a whole.
    static void leaveAbove(const Node* node) {
        for (Node* above = node->parent; above; above = above->parent)
            above->dirty = above->dirty && above->selected;
    }
    // The old range goes, its last row too; then the new one is selected.
    void range(Node* to, Node* old) {
        const Nodes rows = all();
        const auto [top, bottom] = between(rows, anchor, to);
        const auto [first, last] = between(rows, old, old);
        // What held the range goes with all that it holds, also behind the range.
        for (std::size_t i = first; i < top; ++i)
            for (std::size_t k = bottom + 1; k < rows.size(); ++k)
                if (rows[i]->selected && isAbove(rows[i], rows[top]) && isAbove(rows[i], rows[k]) &&
                    std::none_of(rows.begin() + std::ptrdiff_t(top),
                                 rows.begin() + std::ptrdiff_t(bottom + 1),
                                 [&](const Node* each) { return isAbove(each, rows[k]); }))
                    set(rows[k], false);
        if (first < top)
            for (std::size_t i = first; i <= top; ++i)
                set(rows[i], false);
        if (last > bottom)
            for (std::size_t i = bottom; i <= last; ++i)
                set(rows[i], false);
        // A press on the end of a range means the whole of that row.
        set(rows[bottom], false);
        for (std::size_t i = top; i <= bottom; ++i)
            set(rows[i], true);
        leaveAbove(rows[top]);
    }
    static bool isAbove(const Node* above, const Node* node) {
        while (node && node != above)
            node = node->parent;
        return node;
    }
    void tell() {
        ++told;
        if (refused)
            return;
        handOver(m_top);
        update();
    }
    void handOver(Node& node) {
        if (node.dirty) {
            hostSelect(node, node.selected);
            clean(node);
            return;
        }
        for (const auto& child : node.children)
            handOver(*child);
    }
    static void clean(Node& node) {
        node.dirty = false;
        for (const auto& child : node.children)
            clean(*child);
    }

    Node m_top;
};

class Run {
public:
    explicit Run(unsigned int seed)
        : m_random(seed), m_molecule(makeRandom()), m_plain(m_molecule) {
        m_tree.resize(420, 3000);
        m_tree.populate(m_molecule);
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
            m_plain.descending = !m_plain.descending;
            m_tree.rows()->sort(0, m_plain.descending ? Qt::DescendingOrder : Qt::AscendingOrder);
            return;
        case 15:
            return add();
        case 16:
            return changeOutside();
        case 17:
            m_plain.refused = !m_plain.refused;
            m_lock.reset();
            if (m_plain.refused)
                m_lock = std::make_unique<memory_host::SpaceLock>();
            return;
        default:
            return doubleClick();
        }
    }

    void check() {
        std::vector<Plain::Node*> expected = m_plain.all();
        std::size_t i = 0;
        for (TreeItemIterator it(&m_tree); it.current(); ++it, ++i) {
            QVERIFY(i < expected.size());
            const TreeItem* row = it.current();
            QCOMPARE(row->compound(), expected[i]->item);
            QCOMPARE(row->isSelected(), expected[i]->selected);
            QCOMPARE(row->isOpen(), expected[i]->open);
            QCOMPARE(m_tree.isExpanded(m_tree.rows()->indexOf(row)), expected[i]->open);
            QCOMPARE(row->compound()->IsSelected(), m_plain.hostSelected(*expected[i]));
        }
        QCOMPARE(i, expected.size());
        QCOMPARE(m_tree.currentItem()->compound(), m_plain.current->item);
        QCOMPARE(m_tree.takeSelections(), std::exchange(m_plain.told, 0));
        QCOMPARE(m_tree.watch.resets.count(), 0);
        // What the screen shows is what the rows say.
        int y = -1;
        for (const Plain::Node* node : m_plain.shown()) {
            const QRect rect = m_tree.visualRect(m_tree.rows()->indexOf(rowOf(node)));
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

    TreeItem* rowOf(const Plain::Node* node) const {
        for (TreeItemIterator it(&m_tree); it.current(); ++it)
            if (it.current()->compound() == node->item)
                return it.current();
        return nullptr;
    }
    Plain::Node* shownNode() {
        const auto rows = m_plain.shown();
        return rows[static_cast<std::size_t>(pick(static_cast<int>(rows.size())))];
    }
    Plain::Node* anyNode() {
        const auto rows = m_plain.all();
        return rows[static_cast<std::size_t>(pick(static_cast<int>(rows.size())))];
    }
    Qt::KeyboardModifiers modifiers() {
        static const Qt::KeyboardModifiers some[] = {{},
                                                     {},
                                                     Qt::ShiftModifier,
                                                     Qt::ControlModifier,
                                                     Qt::ShiftModifier | Qt::ControlModifier};
        return some[pick(5)];
    }
    QPoint place(const Plain::Node* node) { return m_tree.cell(rowOf(node), pick(4)); }

    void clickOrDrag() {
        const Qt::KeyboardModifiers held = modifiers();
        Plain::Node* node = shownNode();
        m_tree.press(place(node), held);
        m_plain.press(node, held);
        for (int moves = pick(2) ? pick(6) : 0; moves > 0; --moves) {
            node = shownNode();
            m_tree.drag(place(node));
            m_plain.drag(node);
        }
        m_tree.release(place(node), held);
        m_plain.release(node);
    }
    void doubleClick() {
        Plain::Node* node = shownNode();
        m_tree.doubleClick(place(node));
        m_plain.press(node, {});
        m_plain.release(node);
        if (node->open || !node->children.empty())
            m_plain.open(node, !node->open);
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
        m_plain.key(key, held);
    }
    void clickMark() {
        Plain::Node* node = shownNode();
        if (!node->parent || node->children.empty())
            return;
        QTest::mouseClick(m_tree.viewport(), Qt::LeftButton, {}, m_tree.mark(rowOf(node)));
        m_plain.pressed = nullptr;
        m_plain.anchor = node;
        m_plain.open(node, !node->open);
    }
    void pressBelow() {
        const Qt::KeyboardModifiers held = modifiers();
        QTest::mouseClick(m_tree.viewport(), Qt::LeftButton, held, m_tree.below());
        m_plain.pressNothing(held);
    }
    void rightClick() {
        Plain::Node* node = shownNode();
        const int column = 2 + pick(2);
        m_tree.clickCell(rowOf(node), column, Qt::RightButton);
        m_plain.current = node;
        if (m_plain.refused) {
            QCOMPARE(test_support::TestCase::takeMessages(), QStringList("Cannot update CDB!"));
            return;
        }
        m_plain.hostSelect(*node, column == 2 ? !m_plain.hostSelected(*node)
                                              : !m_plain.hostHasSelected(*node));
        m_plain.update();
    }
    void changeOutside() {
        Plain::Node* node = anyNode();
        const bool on = pick(2) != 0;
        const DataPoint<Compound> guard(nullptr, node->item);
        if (!guard.m_good)
            return;
        node->item->SetSelected(on);
        m_plain.hostSelect(*node, on);
        m_plain.update();
    }
    void add() {
        Plain::Node* node = anyNode();
        if (!dynamic_cast<TAVIK::Composite*>(node->item))
            return;
        m_tree.watch.inserted.clear();
        {
            const DataAdder<Compound> guard(nullptr, node->item);
            if (!guard.m_good)
                return;
            Compound* composite = DataMaker::makeCore(node->item, "N", "Composite");
            for (int i = 0; i != 3; ++i)
                DataMaker::makeCore(composite, "n", "Atom");
        }
        QCOMPARE(m_plain.addMissing(*node), 4);
        QCOMPARE(m_tree.watch.inserted.count(), 1);
    }

    std::mt19937 m_random;
    Compound* m_molecule;
    Plain m_plain;
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
