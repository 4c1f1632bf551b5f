// What each item is: its kind, name, identity, place and values, and what the maker makes.
#include "ContractTools.h"
#include "TestSupport.h"
#include "Traversal.h"

#include <set>
#include <type_traits>

using namespace contract;
using namespace TAVIK;

class DataModelContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void theSpaceIsOneAndAlwaysThere();
    void theSpaceHoldsTheTopLevelItems();
    void kindsAreToldApartByTypeTests_data();
    void kindsAreToldApartByTypeTests();
    void aMadeItemIsTheLastChildOfItsParent();
    void aMadeItemIsEmptyUnselectedAndVisible_data() { kindsAreToldApartByTypeTests_data(); }
    void aMadeItemIsEmptyUnselectedAndVisible();
    void makingRefusesWhatCannotBe_data();
    void makingRefusesWhatCannotBe();
    void noResidueAndNoGroupStandsInItsOwnKindAtAnyDepth();
    void childrenAreAContiguousRangeInOrder();
    void onlyWhatHoldsItemsHasChildren();
    void namesAreLatin1BytesAsGiven();
    void slashesAndControlCharactersInNamesAreReplaced();
    void twoItemsMayHaveTheSameName();
    void qualifiedNamesHaveAComponentForEachLevel();
    void groupsStandInNoQualifiedNameButTheirOwn();
    void identifiersAreUniqueAndRise();
    void identifiersAreNeverUsedTwice();
    void anAtomAnswersWithItsValues();
    void anAtomWithoutAPositionAnswersAnInvalidVertex();
    void otherItemsHaveNoPosition();
    void aVertexKnowsWhetherItIsSet();
    void aVertexIsAVectorOfThreeFloats();
    void theHighlightSwitchIsKept();
    void aPolyLineIsAChildThatHoldsNothing();
    void aPolyLineMayHaveNoPoints();
    void aBondHasItsTwoAtomsAsParts();
    void aCompositeHasNoParts();
    void destructorsAndOperationsAreVirtual();
};

void DataModelContractTest::theSpaceIsOneAndAlwaysThere() {
    QVERIFY(Space::instance() != nullptr);
    QCOMPARE(Space::instance(), Space::instance());
    QVERIFY(dynamic_cast<Composite*>(space()) != nullptr);
}

void DataModelContractTest::theSpaceHoldsTheTopLevelItems() {
    QVERIFY(!space()->HasChildren());
    Compound* const first = make(space(), "Composite", "1ubq");
    Compound* const second = make(space(), "Surface", "surface");
    QVERIFY(space()->HasChildren());
    QCOMPARE(childrenOf(space()), (Items{first, second}));
}

void DataModelContractTest::kindsAreToldApartByTypeTests_data() {
    QTest::addColumn<QString>("kind");
    for (const char* kind :
         {"Composite", "Molecule", "Residue", "Group", "Atom", "Bond", "Surface", "Grid"})
        QTest::newRow(kind) << kind;
}

void DataModelContractTest::kindsAreToldApartByTypeTests() {
    QFETCH(QString, kind);
    Compound* const item = make(space(), kind.toStdString());
    QVERIFY(item != nullptr);
    QCOMPARE(dynamic_cast<Molecule*>(item) != nullptr, kind == "Molecule");
    QCOMPARE(dynamic_cast<Residue*>(item) != nullptr, kind == "Residue");
    QCOMPARE(dynamic_cast<Group*>(item) != nullptr, kind == "Group");
    QCOMPARE(dynamic_cast<Atom*>(item) != nullptr, kind == "Atom");
    QCOMPARE(dynamic_cast<Bond*>(item) != nullptr, kind == "Bond");
    QCOMPARE(dynamic_cast<Surface*>(item) != nullptr, kind == "Surface");
    QCOMPARE(dynamic_cast<Grid*>(item) != nullptr, kind == "Grid");
    QVERIFY(dynamic_cast<Space*>(item) == nullptr);
    const QStringList composites{"Composite", "Molecule", "Residue", "Group"};
    QCOMPARE(dynamic_cast<Composite*>(item) != nullptr, composites.contains(kind));
}

void DataModelContractTest::aMadeItemIsTheLastChildOfItsParent() {
    Compound* const parent = make(space(), "Composite");
    Compound* const first = make(parent, "Molecule");
    Compound* const second = make(parent, "Composite");
    Compound* const line = DataMaker::makePolyLine(parent, "line", {});
    Compound* const set = DataMaker::makeSet(parent, "set", {first});
    QCOMPARE(childrenOf(parent), (Items{first, second, line, set}));
    QCOMPARE(childrenOf(space()), (Items{parent}));
}

void DataModelContractTest::aMadeItemIsEmptyUnselectedAndVisible() {
    QFETCH(QString, kind);
    Compound* const item = make(space(), kind.toStdString(), "a name");
    QCOMPARE(item->GetName(), std::string("a name"));
    QVERIFY(!item->GetType().empty());
    QVERIFY(!item->HasChildren());
    QVERIFY(item->ChildBegin() == item->ChildEnd());
    QVERIFY(item->PartBegin() == item->PartEnd());
    QVERIFY(!item->IsSelected());
    QVERIFY(!item->HasSelected());
    QVERIFY(item->IsVisible());
}

void DataModelContractTest::makingRefusesWhatCannotBe_data() {
    QTest::addColumn<std::function<Compound*()>>("attempt");
    const auto row = [](const char* name, const std::function<Compound*()>& attempt) {
        QTest::newRow(name) << attempt;
    };
    row("an item without a parent", [] { return make(nullptr, "Composite"); });
    row("an item in an atom", [] { return make(atom(space()), "Composite"); });
    row("an item in a bond", [] { return make(make(space(), "Bond"), "Composite"); });
    row("a residue in a residue", [] { return make(make(space(), "Residue"), "Residue"); });
    row("a group in a group", [] { return make(make(space(), "Group"), "Group"); });
    row("an unknown kind", [] { return make(space(), "Planet"); });
    row("a kind in lower case", [] { return make(space(), "composite"); });
    row("no kind", [] { return make(space(), ""); });
    row("a second space", [] { return make(space(), "Space"); });
    row("a line without a parent", [] { return DataMaker::makePolyLine(nullptr, "line", {}); });
    row("a line in an atom", [] { return DataMaker::makePolyLine(atom(space()), "line", {}); });
    row("a set without a parent", [] { return DataMaker::makeSet(nullptr, "set", {space()}); });
    row("a set in an atom", [] { return DataMaker::makeSet(atom(space()), "set", {space()}); });
}

void DataModelContractTest::makingRefusesWhatCannotBe() {
    QFETCH(std::function<Compound*()>, attempt);
    QVERIFY(attempt() == nullptr);
    QCOMPARE(takeMessages().size(), 1);
    // At most the item that was to be the parent is there.
    for (Compound* item : childrenOf(space()))
        QVERIFY(!item->HasChildren());
    QCOMPARE(faults(), QString());
}

void DataModelContractTest::noResidueAndNoGroupStandsInItsOwnKindAtAnyDepth() {
    Compound* const residue = make(space(), "Residue", "MET 1");
    Compound* const group = make(residue, "Group", "Backbone");
    Compound* const box = make(group, "Composite", "box");
    QVERIFY(make(box, "Residue", "inner") == nullptr);
    QVERIFY(make(box, "Group", "inner") == nullptr);
    QCOMPARE(takeMessages().size(), 2);
    QVERIFY(!box->HasChildren());
    // One of the other kind, or beside it, is no harm.
    Compound* const outer = make(space(), "Group", "outer");
    Compound* const within = make(outer, "Residue", "ALA 2");
    QVERIFY(make(within, "Group", "inner") == nullptr);
    QCOMPARE(takeMessages().size(), 1);
    Compound* const second = make(residue, "Group", "Side chain");
    Items groups;
    GetGroups(space(), groups, true);
    QCOMPARE(groups, (Items{group, second, outer}));
    Items residues;
    GetResidues(space(), residues, true);
    QCOMPARE(residues, (Items{residue, within}));
    // They are found without a look into what is not wholly selected.
    groups.clear();
    within->SetSelected(true);
    atom(box)->SetSelected(false);
    atom(second)->SetSelected(true);
    GetGroups(space(), groups, false);
    QCOMPARE(groups, (Items{second, outer}));
    QCOMPARE(faults(), QString());
}

void DataModelContractTest::childrenAreAContiguousRangeInOrder() {
    Items made;
    for (int i = 0; i != 1000; ++i)
        made.push_back(make(space(), "Composite", std::to_string(i)));
    Compound** const begin = space()->ChildBegin();
    QCOMPARE(space()->ChildEnd() - begin, 1000);
    for (std::size_t i = 0; i != made.size(); ++i)
        QCOMPARE(begin[i], made[i]);
}

void DataModelContractTest::onlyWhatHoldsItemsHasChildren() {
    const Chain chain(1);
    QVERIFY(chain.molecule->HasChildren());
    QVERIFY(chain.residues[0]->HasChildren());
    QVERIFY(chain.groups[0]->HasChildren());
    QVERIFY(!chain.atoms[0]->HasChildren());
    QVERIFY(!chain.bonds[0]->HasChildren());
    QVERIFY(!make(space(), "Composite")->HasChildren());
}

void DataModelContractTest::namesAreLatin1BytesAsGiven() {
    const std::string name = "\xe9tude 5' \"x\" \\ % * [a]";
    QCOMPARE(make(space(), "Composite", name)->GetName(), name);
    QCOMPARE(make(space(), "Composite", "")->GetName(), std::string());
    const std::string longName(100'000, 'x');
    QCOMPARE(make(space(), "Composite", longName)->GetName(), longName);
}

void DataModelContractTest::slashesAndControlCharactersInNamesAreReplaced() {
    QCOMPARE(make(space(), "Composite", "a/b")->GetName(), std::string("a_b"));
    QCOMPARE(make(space(), "Composite", "a\nb\tc\x7f")->GetName(), std::string("a_b_c_"));
    QCOMPARE(DataMaker::makePolyLine(space(), "/", {})->GetName(), std::string("_"));
    QCOMPARE(DataMaker::makeSet(space(), "x/", {})->GetName(), std::string("x_"));
}

void DataModelContractTest::twoItemsMayHaveTheSameName() {
    Compound* const first = make(space(), "Composite", "same");
    Compound* const second = make(space(), "Composite", "same");
    QVERIFY(first != second);
    QVERIFY(first->GetId() != second->GetId());
    QCOMPARE(first->GetFQName(), second->GetFQName());
}

void DataModelContractTest::qualifiedNamesHaveAComponentForEachLevel() {
    Compound* const entry = make(space(), "Composite", "1ubq");
    Compound* const molecule = make(entry, "Molecule", "A");
    Compound* const box = make(molecule, "Composite", "Groups");
    Compound* const residue = make(box, "Residue", "MET 1");
    QCOMPARE(entry->GetFQName(), std::string("/1ubq"));
    QCOMPARE(molecule->GetFQName(), std::string("/1ubq/A"));
    QCOMPARE(residue->GetFQName(), std::string("/1ubq/A/Groups/MET 1"));
    QCOMPARE(atom(residue)->GetFQName(), std::string("/1ubq/A/Groups/MET 1/CA"));
}

void DataModelContractTest::groupsStandInNoQualifiedNameButTheirOwn() {
    Compound* const residue = make(space(), "Residue", "MET 1");
    Compound* const group = make(residue, "Group", "Backbone");
    QCOMPARE(atom(group)->GetFQName(), std::string("/MET 1/CA"));
    QCOMPARE(group->GetFQName(), std::string("/MET 1/Backbone"));
}

void DataModelContractTest::identifiersAreUniqueAndRise() {
    const Chain chain(3);
    unsigned int last = 0;
    for (Compound* item : chain.atoms) {
        QVERIFY(item->GetId() > last);
        last = item->GetId();
    }
    std::set<unsigned int> all{space()->GetId()};
    std::size_t count = 1;
    for (const Items& items :
         {chain.residues, chain.groups, chain.atoms, chain.bonds, Items{chain.molecule}})
        for (Compound* item : items) {
            all.insert(item->GetId());
            ++count;
        }
    QCOMPARE(all.size(), count);
}

void DataModelContractTest::identifiersAreNeverUsedTwice() {
    std::set<unsigned int> seen;
    for (int i = 0; i != 100; ++i) {
        Compound* const item = make(space(), "Composite");
        QVERIFY(seen.insert(item->GetId()).second);
        DataMaker::Destroy(item);
    }
}

void DataModelContractTest::anAtomAnswersWithItsValues() {
    Compound* const item =
        DataMaker::makeAtom(space(), {"CU", "Cu", Vertex(1.5F, -2.25F, 1e6F, true), 37.5F, 0});
    QCOMPARE(item->GetName(), std::string("CU"));
    QCOMPARE(item->GetType(), std::string("Cu"));
    const Vertex position = item->GetPosition();
    QVERIFY(position.isValid());
    QVERIFY(position[0] == 1.5F && position[1] == -2.25F && position[2] == 1e6F);
    const auto* const asAtom = dynamic_cast<Atom*>(item);
    QCOMPARE(asAtom->GetTemperature(), 37.5F);
    QCOMPARE(asAtom->GetModelNumber(), std::string("0"));
}

void DataModelContractTest::anAtomWithoutAPositionAnswersAnInvalidVertex() {
    Compound* const item = DataMaker::makeAtom(space(), {"CA", "C", Vertex(), 0.0F, 0});
    QVERIFY(!item->GetPosition().isValid());
}

void DataModelContractTest::otherItemsHaveNoPosition() {
    const Chain chain(1);
    for (Compound* item : {space(), chain.molecule, chain.residues[0], chain.groups[0],
                           chain.bonds[0], make(space(), "Surface"), make(space(), "Atom")})
        QVERIFY(!item->GetPosition().isValid());
}

void DataModelContractTest::aVertexKnowsWhetherItIsSet() {
    QVERIFY(!Vertex().isValid());
    const Vertex set(1.0F, 2.0F, 3.0F, true);
    const Vertex unset(1.0F, 2.0F, 3.0F, false);
    QVERIFY(set.isValid());
    QVERIFY(!unset.isValid());
    // The coordinates are kept also where they are not valid.
    QVERIFY(unset[0] == 1.0F && unset[1] == 2.0F && unset[2] == 3.0F);
    Vertex copy(set);
    QVERIFY(copy.isValid() && copy[2] == 3.0F);
    copy = unset;
    QVERIFY(!copy.isValid());
    copy[1] = 5.0F;
    QVERIFY(copy[1] == 5.0F && unset[1] == 2.0F);
}

void DataModelContractTest::aVertexIsAVectorOfThreeFloats() {
    static_assert(std::is_base_of_v<Vector<float, 3>, Vertex>);
    static_assert(std::has_virtual_destructor_v<Vector<float, 3>>);
    static_assert(std::is_same_v<decltype(std::declval<Vertex&>()[0]), float&>);
    const Vector<float, 3> vector({1.0F, 2.0F, 3.0F});
    QVERIFY(vector[0] == 1.0F && vector[1] == 2.0F && vector[2] == 3.0F);
}

void DataModelContractTest::theHighlightSwitchIsKept() {
    const bool before = Space::GetShowSelection();
    Space::SetShowSelection(!before);
    QCOMPARE(Space::GetShowSelection(), !before);
    Space::SetShowSelection(before);
    QCOMPARE(Space::GetShowSelection(), before);
}

void DataModelContractTest::aPolyLineIsAChildThatHoldsNothing() {
    Compound* const frame = make(space(), "Composite");
    Compound* const line =
        DataMaker::makePolyLine(frame, "X", {Vertex(0, 0, 0, true), Vertex(10, 0, 0, true)});
    QVERIFY(line != nullptr);
    QCOMPARE(line->GetName(), std::string("X"));
    QCOMPARE(childrenOf(frame), (Items{line}));
    QVERIFY(dynamic_cast<Composite*>(line) == nullptr);
    QVERIFY(!line->HasChildren());
    QVERIFY(line->IsVisible());
    line->SetColor(Color(0xffff0000U));
    QCOMPARE(line->GetColor().rgba(), 0xffff0000U);
}

void DataModelContractTest::aPolyLineMayHaveNoPoints() {
    QVERIFY(DataMaker::makePolyLine(space(), "empty", {}) != nullptr);
    QVERIFY(DataMaker::makePolyLine(space(), "unset", {Vertex(), Vertex()}) != nullptr);
}

void DataModelContractTest::aBondHasItsTwoAtomsAsParts() {
    Compound* const a = atom(space());
    Compound* const b = atom(space());
    Compound* const bond = DataMaker::makeBond(space(), a, b);
    QCOMPARE(partsOf(bond), (Items{a, b}));
    QVERIFY(bond->ChildBegin() == bond->ChildEnd());
}

void DataModelContractTest::aCompositeHasNoParts() {
    const Chain chain(1);
    for (Compound* item : {space(), chain.molecule, chain.residues[0], chain.groups[0]})
        QVERIFY(item->PartBegin() == item->PartEnd());
}

void DataModelContractTest::destructorsAndOperationsAreVirtual() {
    static_assert(std::is_polymorphic_v<Compound>);
    static_assert(std::has_virtual_destructor_v<Compound>);
    static_assert(std::is_base_of_v<Compound, Composite>);
    static_assert(std::is_base_of_v<Composite, Space>);
    static_assert(std::is_base_of_v<Compound, Molecule> && std::is_base_of_v<Compound, Residue> &&
                  std::is_base_of_v<Compound, Group> && std::is_base_of_v<Compound, Atom> &&
                  std::is_base_of_v<Compound, Bond> && std::is_base_of_v<Compound, Surface> &&
                  std::is_base_of_v<Compound, Grid>);
    static_assert(std::is_integral_v<decltype(std::declval<Compound>().GetId())>);
}

REGISTER_TEST(DataModelContractTest)
#include "DataModelContractTest.moc"
