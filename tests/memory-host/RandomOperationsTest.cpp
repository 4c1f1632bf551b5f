// Thousands of operations of every kind in a random order, each done in the host and in a plain
// model that counts everything anew; after each, both must say the same.
#include "DataMaker.h"
#include "Kinds.h"
#include "PlainSpace.h"
#include "Space.h"
#include "TestSupport.h"
#include "items/Building.h"

#include <algorithm>
#include <random>

using namespace memory_host;
using plain::Item;
using TAVIK::Compound;
using TAVIK::DataMaker;

namespace {

class Run {
public:
    explicit Run(unsigned int seed) : m_random(seed), m_plain(TAVIK::Space::instance()) {}

    /// Does one operation; returns its name and what differs after it.
    std::vector<std::string> step() {
        const std::string done = perform();
        std::vector<std::string> faults = m_plain.differences();
        faults.insert(faults.end(), m_faults.begin(), m_faults.end());
        for (const std::string& fault : checkInvariants())
            faults.push_back(fault);
        if (!faults.empty())
            faults.insert(faults.begin(), "after " + done);
        return faults;
    }

private:
    int number(int from, int to) { return std::uniform_int_distribution(from, to)(m_random); }
    bool coin() { return number(0, 1) == 1; }

    template <class Wanted> Compound* pick(const Wanted& wanted) {
        std::vector<Compound*> items = m_plain.inOrder();
        std::erase_if(items, [&](Compound* item) { return !wanted(m_plain.of(item)); });
        return items.empty()
                   ? nullptr
                   : items[static_cast<std::size_t>(number(0, static_cast<int>(items.size()) - 1))];
    }
    Compound* pickHolder() {
        return pick([](const Item& item) { return item.holds(); });
    }
    Compound* pickAny() {
        return pick([](const Item&) { return true; });
    }
    Compound* pickKind(Item::Kind kind) {
        return pick([kind](const Item& item) { return item.kind == kind; });
    }

    std::string perform() {
        const std::size_t count = m_plain.inOrder().size();
        // Around a hundred items: enough for every constellation, few enough to recount each step.
        if (count > 120 || (count > 60 && number(0, 5) == 0))
            return destroy();
        switch (number(0, 15)) {
        case 0:
        case 1:
            return makeHolder();
        case 2:
        case 3:
        case 4:
            return makeAtom(pickHolder());
        case 5:
            return makeBond();
        case 6:
            return makeSet();
        case 7:
            return makeOther();
        case 8:
        case 9:
            return select();
        case 10:
        case 11:
            return show();
        case 12:
            return toggle();
        case 13:
            return switchModel();
        case 14:
            return attachBranch();
        default:
            return changeAtom();
        }
    }

    std::string makeHolder() {
        static constexpr const char* kinds[] = {"Composite", "Molecule", "Residue", "Residue",
                                                "Group"};
        const std::string kind = kinds[number(0, 4)];
        Compound* const parent = pickHolder();
        const bool nests = m_plain.nests(kindOf(kind), parent);
        Compound* const made = DataMaker::makeCore(parent, "holder", kind);
        if (made)
            m_plain.add(made, kindOf(kind), parent, {}, 0);
        const bool told = !test_support::TestCase::takeMessages().empty();
        if (nests == (made != nullptr) || nests != told)
            m_faults.push_back("a " + kind + " in its own kind");
        return "making a " + kind;
    }

    static Item::Kind kindOf(const std::string& className) {
        return className == "Residue" ? Item::Residue
               : className == "Group" ? Item::Group
                                      : Item::Holder;
    }

    Compound* addAtomTo(Compound* parent) {
        const auto model = static_cast<unsigned int>(std::max(0, number(-2, 3)));
        Compound* const made =
            addAtom(parent, {"CA", "C", TAVIK::Vertex(1, 2, 3, true), 10.0F, model});
        m_plain.add(made, Item::Atom, parent, {}, model);
        return made;
    }

    std::string makeAtom(Compound* parent) {
        addAtomTo(parent);
        return "making an atom";
    }

    std::string makeBond() {
        Compound* const parent = pickHolder();
        Compound* const a = pickKind(Item::Atom);
        Compound* const b = pickKind(Item::Atom);
        Compound* const made = addBond(parent, a, b);
        if (made)
            m_plain.add(made, Item::Bond, parent, {a, b}, 0);
        return made ? "making a bond" : "making no bond";
    }

    std::string makeSet() {
        Compound* const parent = pickHolder();
        std::vector<Compound*> members;
        for (int i = number(0, 6); i > 0; --i)
            members.push_back(pickAny());
        std::vector<Compound*> once;
        for (Compound* member : members)
            if (std::find(once.begin(), once.end(), member) == once.end())
                once.push_back(member);
        members.push_back(nullptr);
        Compound* const made = DataMaker::makeSet(parent, "set", members);
        m_plain.add(made, Item::Set, parent, once, 0);
        return "making a set";
    }

    std::string makeOther() {
        Compound* const parent = pickHolder();
        Compound* const made = coin() ? DataMaker::makeCore(parent, "surface", "Surface")
                                      : DataMaker::makePolyLine(parent, "line", {});
        m_plain.add(made, Item::Other, parent, {}, 0);
        return "making a leaf";
    }

    std::string destroy() {
        Compound* const item = pick([](const Item& candidate) { return candidate.parent; });
        const std::string what = "destroying " + item->GetType() + " " + item->GetFQName();
        m_plain.destroy(item);
        DataMaker::Destroy(item);
        return what;
    }

    std::string select() {
        Compound* const item = pickAny();
        const bool on = coin();
        m_plain.setSelected(item, on);
        item->SetSelected(on);
        return (on ? "selecting " : "unselecting ") + item->GetType() + " " + item->GetFQName();
    }

    std::string show() {
        Compound* const item = pickAny();
        const bool on = coin();
        m_plain.setVisible(item, on);
        item->SetVisible(on);
        return (on ? "showing " : "hiding ") + item->GetType() + " " + item->GetFQName();
    }

    std::string toggle() {
        Compound* const item = pickAny();
        if (coin()) {
            m_plain.setSelected(item, !m_plain.isSelected(item));
            item->ToggleSelected();
            return "toggling the selection";
        }
        m_plain.setVisible(item, !m_plain.isVisible(item));
        item->ToggleVisible();
        return "toggling the visibility";
    }

    std::string switchModel() {
        Compound* const residue = pickKind(Item::Residue);
        if (!residue)
            return "nothing";
        const int step = number(-1, 1);
        m_plain.switchModel(residue, step);
        if (step < 0)
            residue->PrevModel();
        else if (step == 0)
            residue->FirstModel();
        else
            residue->NextModel();
        return "switching a model";
    }

    // A branch that is built aside and then attached, as a file reader does.
    std::string attachBranch() {
        static constexpr const char* kinds[] = {"Composite", "Residue", "Group"};
        const std::string kind = kinds[number(0, 2)];
        Compound* const branch = makeDetached("branch", kind);
        m_plain.add(branch, kindOf(kind), nullptr, {}, 0);
        const std::string innerKind = kind == "Group" ? "Residue" : "Group";
        Compound* const inner = DataMaker::makeCore(branch, "inner", innerKind);
        m_plain.add(inner, kindOf(innerKind), branch, {}, 0);
        std::vector<Compound*> atoms;
        for (int i = number(0, 4); i > 0; --i)
            atoms.push_back(addAtomTo(coin() ? branch : inner));
        if (atoms.size() > 1) {
            Compound* const bond = addBond(branch, atoms.front(), atoms.back());
            m_plain.add(bond, Item::Bond, branch, {atoms.front(), atoms.back()}, 0);
        }
        if (coin()) {
            m_plain.setVisible(inner, false);
            inner->SetVisible(false);
        }
        Compound* const parent = pickHolder();
        const bool nests =
            m_plain.nests(kindOf(kind), parent) || m_plain.nests(kindOf(innerKind), parent);
        attach(branch, parent);
        const bool told = !test_support::TestCase::takeMessages().empty();
        if (nests == (parentOf(branch) != nullptr) || nests != told)
            m_faults.push_back("a branch with its own kind around it");
        if (!nests) {
            m_plain.attach(branch, parent);
        } else {
            m_plain.destroy(branch);
            DataMaker::Destroy(branch);
        }
        return "attaching a branch";
    }

    std::string changeAtom() {
        Compound* const atom = pickKind(Item::Atom);
        if (!atom)
            return "nothing";
        const auto model = static_cast<unsigned int>(number(0, 3));
        m_plain.setModel(atom, model);
        setAtom(atom, {"", "N", {}, 0.0F, model});
        return "changing an atom";
    }

    std::mt19937 m_random;
    plain::Space m_plain;
    std::vector<std::string> m_faults; ///< what was refused or made that should not have been
};

} // namespace

class RandomOperationsTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void everyStepLeavesWhatAPlainModelExpects_data();
    void everyStepLeavesWhatAPlainModelExpects();
};

void RandomOperationsTest::everyStepLeavesWhatAPlainModelExpects_data() {
    QTest::addColumn<unsigned int>("seed");
    for (unsigned int seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void RandomOperationsTest::everyStepLeavesWhatAPlainModelExpects() {
    QFETCH(unsigned int, seed);
    Run run(seed);
    for (int step = 0; step != 1500; ++step) {
        const std::vector<std::string> faults = run.step();
        if (faults.empty())
            continue;
        for (const std::string& fault : faults)
            std::fprintf(stderr, "%s\n", fault.c_str());
        QFAIL(qPrintable(QStringLiteral("step %1").arg(step)));
    }
}

REGISTER_TEST(RandomOperationsTest)
#include "RandomOperationsTest.moc"
