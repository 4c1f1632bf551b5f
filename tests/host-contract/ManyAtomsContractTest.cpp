// Many items at once: where they are, how they look, and selecting them.
#include "ContractTools.h"
#include "ManyAtoms.h"
#include "SelectionChanges.h"
#include "TestSupport.h"
#include "Traversal.h"

#include <functional>
#include <stdexcept>

using namespace contract;
using namespace TAVIK;

namespace {

// Writes down what it is shown, and then does what `answer` says.
struct Visitor : AtomPlaceVisitor {
    void Visit(std::span<Compound* const> some, std::span<const AtomPlace> theirPlaces) override {
        ++calls;
        largest = std::max(largest, some.size());
        QVERIFY(!some.empty());
        QCOMPARE(theirPlaces.size(), some.size());
        atoms.insert(atoms.end(), some.begin(), some.end());
        places.insert(places.end(), theirPlaces.begin(), theirPlaces.end());
        if (answer)
            answer(some);
    }

    std::function<void(std::span<Compound* const>)> answer;
    Items atoms;
    std::vector<AtomPlace> places;
    std::size_t calls = 0;
    std::size_t largest = 0;
};

Items visited(Compound* root, bool selected) {
    Visitor visitor;
    VisitAtomPlaces(root, selected, visitor);
    return visitor.atoms;
}

Items atomsOf(Compound* root, bool selected) {
    Items atoms;
    GetAtoms(root, atoms, true);
    std::erase_if(atoms, [&](const Compound* atom) { return atom->IsSelected() != selected; });
    return atoms;
}

// What any item may answer about the selection.
std::vector<int> stateOf(Compound* root) {
    std::vector<int> state{root->IsSelected(), root->HasSelected()};
    for (Compound* child : childrenOf(root)) {
        const std::vector<int> below = stateOf(child);
        state.insert(state.end(), below.begin(), below.end());
    }
    return state;
}

} // namespace

class ManyAtomsContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void nothingIsVisitedWhereThereAreNoAtoms() {
        Chain chain(2);
        QVERIFY(visited(nullptr, false).empty());
        QVERIFY(visited(chain.bonds[0], false).empty());
        QVERIFY(visited(make(space(), "Composite"), false).empty());
        QVERIFY(visited(space(), true).empty());
        chain.bonds[0]->SetSelected(true);
        QVERIFY(visited(space(), true).empty());
    }

    void aRootThatIsAnAtomIsVisitedItself() {
        Chain chain(1);
        QCOMPARE(visited(chain.atoms[1], false), Items{chain.atoms[1]});
        QVERIFY(visited(chain.atoms[1], true).empty());
    }

    void atomsAreVisitedInOrderByWhetherTheyAreSelected() {
        Chain chain(50);
        for (std::size_t i = 0; i < chain.atoms.size(); i += 3)
            chain.atoms[i]->SetSelected(true);
        chain.residues[7]->SetSelected(true);
        for (const bool selected : {false, true}) {
            QCOMPARE(visited(space(), selected), atomsOf(space(), selected));
            QCOMPARE(visited(chain.residues[3], selected), atomsOf(chain.residues[3], selected));
        }
    }

    void placesAreThePositions() {
        Compound* residue = make(space(), "Residue");
        DataMaker::makeAtom(residue, {"CA", "C", Vertex(1.5F, -2.0F, 3.25F, true), 20.0F, 0});
        DataMaker::makeAtom(residue, {"CB", "C", Vertex(1.0F, 2.0F, 3.0F, false), 20.0F, 0});
        Visitor visitor;
        VisitAtomPlaces(residue, false, visitor);
        QCOMPARE(visitor.places.size(), std::size_t{2});
        for (std::size_t i = 0; i != 2; ++i) {
            const Vertex position = visitor.atoms[i]->GetPosition();
            QCOMPARE(visitor.places[i].isValid, position.isValid());
            for (const std::size_t axis : {0, 1, 2})
                QCOMPARE(visitor.places[i].position[axis], position[axis]);
        }
        QVERIFY(visitor.places[0].isValid);
        QVERIFY(!visitor.places[1].isValid);
    }

    void looksAreWhatTheItemsAnswer() {
        Chain chain(20);
        TAVIK::Compound* const surface = make(space(), "Surface");
        TAVIK::Compound* const set = DataMaker::makeSet(space(), "set", {chain.atoms[0]});
        Items items = chain.atoms;
        items.insert(items.end(), chain.bonds.begin(), chain.bonds.end());
        items.insert(items.end(), chain.residues.begin(), chain.residues.end());
        items.insert(items.end(), {surface, set, space()});
        // Any order, and an item more than once.
        std::reverse(items.begin() + 3, items.begin() + 30);
        items.push_back(items.front());
        DataMaker::makeAtom(chain.residues[0], {"X", "C", Vertex(1, 2, 3, false), 20.0F, 0});
        items.push_back(childrenOf(chain.residues[0]).back());
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (i % 3 == 0)
                items[i]->SetColor(Color(0x80112200U + unsigned(i)));
            // What holds all the others would make them alike.
            if (dynamic_cast<Composite*>(items[i]))
                continue;
            if (i % 4 == 1)
                items[i]->SetSelected(i % 8 == 1);
            if (i % 5 == 2)
                items[i]->SetVisible(i % 10 == 2);
        }
        std::vector<ItemLook> looks(items.size());
        GetLooks(items, looks);
        std::array<int, 4> seen{};
        for (std::size_t i = 0; i < items.size(); ++i) {
            const ItemLook& look = looks[i];
            QCOMPARE(look.rgba, items[i]->GetColor().rgba());
            QCOMPARE(look.isVisible, items[i]->IsVisible());
            QCOMPARE(look.isSelected, items[i]->IsSelected());
            const bool isAtom = dynamic_cast<Atom*>(items[i]) != nullptr;
            const Vertex position = items[i]->GetPosition();
            QCOMPARE(look.place.isValid, isAtom && position.isValid());
            for (const std::size_t axis : {0, 1, 2})
                if (look.place.isValid)
                    QCOMPARE(look.place.position[axis], position[axis]);
            ++seen[std::size_t(look.isVisible) * 2 + std::size_t(look.isSelected)];
        }
        QVERIFY(*std::min_element(seen.begin(), seen.end()) > 0);
    }

    void nullItemsHaveNoLook() {
        Chain chain(1);
        const Items items = {nullptr, chain.atoms[0], nullptr};
        std::vector<ItemLook> looks(3, {1, true, true, {{1, 2, 3}, true}});
        GetLooks(items, looks);
        for (const std::size_t i : {0, 2}) {
            QCOMPARE(looks[i].rgba, 0U);
            QVERIFY(!looks[i].isVisible && !looks[i].isSelected && !looks[i].place.isValid);
        }
        QVERIFY(looks[1].isVisible && looks[1].place.isValid);
        GetLooks({}, {});
    }

    void manyComeInCallsOfBoundedLength() {
        Chain chain(1500);
        Visitor visitor;
        VisitAtomPlaces(space(), false, visitor);
        QCOMPARE(visitor.atoms, chain.atoms);
        QVERIFY(visitor.calls > 1 && visitor.calls < 100);
        QVERIFY(visitor.largest <= AtomPlaceVisitor::most);
    }

    void whatIsVisitedMayBeSelectedMeanwhile() {
        Chain chain(1500);
        Visitor visitor;
        visitor.answer = [](std::span<Compound* const> atoms) { SelectAtoms(atoms, true); };
        VisitAtomPlaces(space(), false, visitor);
        QCOMPARE(visitor.atoms, chain.atoms);
        QVERIFY(std::ranges::all_of(chain.residues, &Compound::IsSelected));
    }

    void thoseOfEarlierCallsMayBeSelectedMeanwhile() {
        Chain chain(1500);
        Visitor visitor;
        std::size_t selected = 0;
        visitor.answer = [&](std::span<Compound* const> atoms) {
            const std::size_t earlier = visitor.atoms.size() - atoms.size();
            SelectAtoms({visitor.atoms.data() + selected, earlier - selected}, true);
            selected = earlier;
        };
        VisitAtomPlaces(space(), false, visitor);
        QCOMPARE(visitor.atoms, chain.atoms);
        QVERIFY(selected > 0);
        QCOMPARE(visited(space(), true).size(), selected);
    }

    void anExceptionEndsTheVisit() {
        Chain chain(1500);
        Visitor visitor;
        visitor.answer = [](std::span<Compound* const>) { throw std::runtime_error("enough"); };
        QVERIFY_EXCEPTION_THROWN(VisitAtomPlaces(space(), false, visitor), std::runtime_error);
        QCOMPARE(visitor.calls, std::size_t{1});
    }

    // Any atoms, in any order and twice, with a set that lists some of them and a residue.
    void selectingManyIsSelectingEachOfThem_data() {
        QTest::addColumn<int>("step");
        QTest::newRow("all") << 1;
        QTest::newRow("every second") << 2;
        QTest::newRow("every seventh") << 7;
        QTest::newRow("out of order") << 1111;
    }
    void selectingManyIsSelectingEachOfThem() {
        QFETCH(int, step);
        Chain chain(300);
        Items members(chain.atoms.begin() + 10, chain.atoms.begin() + 30);
        members.push_back(chain.residues[100]);
        members.push_back(chain.molecule);
        Compound* set = DataMaker::makeSet(space(), "set", members);
        Items some;
        for (std::size_t i = 0, at = 0; i < chain.atoms.size(); ++i, at += std::size_t(step))
            some.push_back(chain.atoms[at % chain.atoms.size()]);
        if (step == 2 || step == 7)
            some.resize(some.size() / std::size_t(step));
        for (const bool on : {true, false}) {
            // Some are as they are to be before.
            chain.molecule->SetSelected(!on);
            for (std::size_t i = 0; i < chain.atoms.size(); i += 5)
                chain.atoms[i]->SetSelected(on);
            const std::vector<int> before = stateOf(space());
            for (Compound* atom : some)
                atom->SetSelected(on);
            const std::vector<int> expected = stateOf(space());
            const bool setHas = set->HasSelected();
            const bool setIs = set->IsSelected();
            QVERIFY(expected != before);
            chain.molecule->SetSelected(!on);
            for (std::size_t i = 0; i < chain.atoms.size(); i += 5)
                chain.atoms[i]->SetSelected(on);
            const std::uint64_t changes = SelectionChanges();
            SelectAtoms(some, on);
            QCOMPARE(stateOf(space()), expected);
            QCOMPARE(set->HasSelected(), setHas);
            QCOMPARE(set->IsSelected(), setIs);
            QVERIFY(SelectionChanges() > changes);
        }
    }
};

REGISTER_TEST(ManyAtomsContractTest)
#include "ManyAtomsContractTest.moc"
