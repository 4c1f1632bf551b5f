// Building aside and attaching, values of atoms and grids, and what is refused.
#include "Ancestry.h"
#include "DataLines.h"
#include "DataPointBase.h"
#include "History.h"
#include "Sample.h"
#include "TestSupport.h"
#include "items/Holder.h"

#include <cmath>

using namespace memory_host;
using namespace TAVIK;

class BuildingTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void cleanup() override;
    void aDetachedBranchIsNotInTheSpace();
    void attachingPutsItLast();
    void attachingGivesUnusedMemoryBack();
    void attachingRefusesWhatIsNotDetached();
    void attachingRefusesARing();
    void attachingRefusesWhatHoldsNothing();
    void attachingRefusesAResidueInAResidueAndAGroupInAGroup();
    void attachingNullDoesNothing();
    void anUnknownKindIsRefused();
    void atomsAreAddedToCompositesOnly();
    void bondsAreMadeBetweenTwoAtomsOnly();
    void aBondMayBeMadeTwice();
    void valuesAreSetOnAtomsOnly();
    void aPolyLineKeepsItsPoints();
    void aGridKeepsItsValues();
    void aGridThatWasMadeEmptyTakesValues();
    void aFlatGridAnswersWithoutHarm();
    void parentsAreKnown();
    void atomsStartInTheColourOfTheirElement_data();
    void atomsStartInTheColourOfTheirElement();
    void aColourThatWasSetGivesWayToNewValues();
    void coloursAndValuesOfOneStepAreTakenBack();
    void everyRefusalSaysWhat();
};

void BuildingTest::cleanup() {
    QCOMPARE(faults(), QString());
    TestCase::cleanup();
}

void BuildingTest::aDetachedBranchIsNotInTheSpace() {
    Compound* const branch = makeDetached("branch", "Molecule");
    makeAtom(branch);
    QVERIFY(!space()->HasChildren());
    QVERIFY(branch->HasChildren());
    DataMaker::Destroy(branch);
}

void BuildingTest::attachingPutsItLast() {
    Compound* const first = make(space(), "Composite");
    Compound* const branch = makeDetached("branch", "Composite");
    attach(branch, space());
    QCOMPARE(childrenOf(space()), (Items{first, branch}));
    QCOMPARE(TAVIK::GetParent(branch), space());
}

void BuildingTest::attachingGivesUnusedMemoryBack() {
    Compound* const branch = makeDetached("branch", "Composite");
    for (int i = 0; i != 100; ++i)
        make(make(branch, "Residue"), "Group");
    attach(branch, space());
    QCOMPARE(HostItem::of(branch).asHolder().capacity, 100U);
    for (Compound* residue : childrenOf(branch))
        QCOMPARE(HostItem::of(residue).asHolder().capacity, 1U);
    // And grows again.
    QCOMPARE(childrenOf(branch).size(), std::size_t(100));
    make(branch, "Residue");
    QCOMPARE(childrenOf(branch).size(), std::size_t(101));
}

void BuildingTest::attachingRefusesWhatIsNotDetached() {
    Compound* const a = make(space(), "Composite", "a");
    Compound* const b = make(space(), "Composite", "b");
    attach(a, b);
    attach(a, space());
    attach(space(), b);
    QCOMPARE(takeMessages(), (QStringList{"attach: \"a\" is not detached from \"b\"",
                                          "attach: \"a\" is not detached from \"\"",
                                          "attach: \"\" is not detached from \"b\""}));
    QCOMPARE(childrenOf(space()), (Items{a, b}));
}

void BuildingTest::attachingRefusesARing() {
    Compound* const root = makeDetached("root", "Composite");
    Compound* const inner = make(make(root, "Composite"), "Composite", "inner");
    attach(root, inner);
    attach(root, root);
    QCOMPARE(takeMessages(), (QStringList{"attach: \"root\" is not detached from \"inner\"",
                                          "attach: \"root\" is not detached from \"root\""}));
    QVERIFY(!inner->HasChildren());
    DataMaker::Destroy(root);
}

void BuildingTest::attachingRefusesWhatHoldsNothing() {
    Compound* const branch = makeDetached("branch", "Composite");
    attach(branch, makeAtom(space()));
    attach(branch, nullptr);
    QCOMPARE(takeMessages(),
             (QStringList{"attach: \"CA\" holds no items, so that \"branch\" cannot be made in it",
                          "attach: no parent for \"branch\""}));
    QVERIFY(TAVIK::GetParent(branch) == nullptr);
    DataMaker::Destroy(branch);
}

void BuildingTest::attachingRefusesAResidueInAResidueAndAGroupInAGroup() {
    Compound* const residue = make(space(), "Residue", "ALA 1");
    Compound* const group = make(residue, "Group", "Backbone");
    Compound* const box = makeDetached("box", "Composite");
    Compound* const inner = make(make(box, "Molecule"), "Residue", "ALA 2");
    attach(box, residue);
    attach(box, group);
    make(inner, "Group");
    DataMaker::Destroy(inner);
    make(box, "Group");
    attach(box, group);
    QCOMPARE(
        takeMessages(),
        (QStringList{"attach: \"box\" cannot stand in \"ALA 1\": no residue stands in a residue",
                     "attach: \"box\" cannot stand in \"Backbone\": no residue stands in a residue",
                     "attach: \"box\" cannot stand in \"Backbone\": no group stands in a group"}));
    QVERIFY(TAVIK::GetParent(box) == nullptr);
    QVERIFY(!group->HasChildren());
    attach(box, residue);
    QCOMPARE(childrenOf(residue), (Items{group, box}));
    QCOMPARE(faults(), QString());
}

void BuildingTest::attachingNullDoesNothing() {
    attach(nullptr, space());
    attach(nullptr, nullptr);
    QVERIFY(!space()->HasChildren());
}

void BuildingTest::anUnknownKindIsRefused() {
    QVERIFY(makeDetached("x", "Space") == nullptr);
    QVERIFY(makeDetached("x", "Set") == nullptr);
    QVERIFY(makeDetached("x", "PolyLine") == nullptr);
    QCOMPARE(takeMessages(), (QStringList{"makeCore: there is no kind \"Space\" for \"x\"",
                                          "makeCore: there is no kind \"Set\" for \"x\"",
                                          "makeCore: there is no kind \"PolyLine\" for \"x\""}));
}

void BuildingTest::atomsAreAddedToCompositesOnly() {
    Compound* const atom = makeAtom(space());
    QVERIFY(makeAtom(atom) == nullptr);
    QVERIFY(makeAtom(nullptr) == nullptr);
    QVERIFY(DataMaker::makeGrid(atom, "grid", {}) == nullptr);
    QCOMPARE(
        takeMessages(),
        (QStringList{"makeAtom: \"CA\" holds no items, so that \"CA\" cannot be made in it",
                     "makeAtom: no parent for \"CA\"",
                     "makeGrid: \"CA\" holds no items, so that \"grid\" cannot be made in it"}));
}

void BuildingTest::bondsAreMadeBetweenTwoAtomsOnly() {
    Compound* const a = makeAtom(space());
    Compound* const b = makeAtom(space());
    Compound* const surface = make(space(), "Surface");
    for (const auto& [first, second] : {std::pair{a, a}, std::pair{a, surface},
                                        std::pair{surface, b}, std::pair<Compound*, Compound*>()})
        QVERIFY(addBond(space(), first, second) == nullptr);
    QCOMPARE(takeMessages(), QStringList(4, "makeBond: a bond is between two atoms"));
    QCOMPARE(childrenOf(space()), (Items{a, b, surface}));
}

void BuildingTest::aBondMayBeMadeTwice() {
    Compound* const a = makeAtom(space());
    Compound* const b = makeAtom(space());
    Compound* const first = addBond(space(), a, b);
    Compound* const second = addBond(space(), b, a);
    QCOMPARE(faults(), QString());
    DataMaker::Destroy(first);
    QCOMPARE(partsOf(second), (Items{b, a}));
    DataMaker::Destroy(a);
    QCOMPARE(childrenOf(space()), (Items{b}));
}

void BuildingTest::valuesAreSetOnAtomsOnly() {
    Compound* const surface = make(space(), "Surface");
    setAtom(surface, {"x", "C", {}, 0.0F, 1});
    setAtom(nullptr, {"x", "C", {}, 0.0F, 1});
    setGrid(surface, {});
    setGrid(nullptr, {});
    QCOMPARE(surface->GetType(), std::string("Surface"));
}

void BuildingTest::aPolyLineKeepsItsPoints() {
    Compound* const line = DataMaker::makePolyLine(
        space(), "line", {Vertex(1, 2, 3, true), Vertex(), Vertex(4, 5, 6, true)});
    const std::vector<Vertex>& points = *GetPolyLinePoints(line);
    QCOMPARE(points.size(), std::size_t(3));
    QVERIFY(points[0].isValid() && !points[1].isValid());
    QCOMPARE(points[2][1], 5.0F);
    QVERIFY(!GetPolyLinePoints(space()));
}

void BuildingTest::aGridKeepsItsValues() {
    const std::vector<float> values{1, 2, 3, 4, 5, 6};
    Grid* const grid = DataMaker::makeGrid(
        space(), "map", {{3, 2, 1}, {}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, values});
    QVERIFY(GetGridValues(grid)->values == values);
    QCOMPARE(grid->m_points[0], 3);
    QCOMPARE(grid->m_upper[1], 2);
}

void BuildingTest::aGridThatWasMadeEmptyTakesValues() {
    auto* const grid = dynamic_cast<Grid*>(make(space(), "Grid", "map"));
    setGrid(grid, {{2, 1, 1}, {5, 0, 0}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {7, 8}});
    QVERIFY(GetGridValues(grid)->values == (std::vector<float>{7, 8}));
    int ijk[3] = {};
    QVERIFY(grid->GetNearest(Vertex(6.2F, 0, 0, true), ijk));
    QCOMPARE(ijk[0], 1);
}

void BuildingTest::aFlatGridAnswersWithoutHarm() {
    // Two steps in one direction span no space.
    const Grid* const grid = DataMaker::makeGrid(
        space(), "flat",
        {{2, 2, 2}, {}, {{{1, 0, 0}, {2, 0, 0}, {0, 0, 1}}}, std::vector<float>(8)});
    for (const float x : {0.0F, 1e30F, std::nanf("")}) {
        int ijk[3] = {-1, -1, -1};
        grid->GetNearest(Vertex(x, x, x, true), ijk);
        for (const int index : ijk)
            QVERIFY(std::abs(index) <= 1 << 30);
    }
}

void BuildingTest::parentsAreKnown() {
    const Sample sample;
    QCOMPARE(TAVIK::GetParent(sample.atoms[0]), sample.groups[0]);
    QCOMPARE(TAVIK::GetParent(sample.groups[0]), sample.residues[0]);
    QCOMPARE(TAVIK::GetParent(sample.entry), space());
    QVERIFY(TAVIK::GetParent(space()) == nullptr);
}

void BuildingTest::atomsStartInTheColourOfTheirElement_data() {
    QTest::addColumn<QString>("type");
    QTest::addColumn<unsigned int>("rgba");
    QTest::newRow("carbon") << "C" << 0xffc8c8c8U;
    QTest::newRow("nitrogen") << "N" << 0xff8f8fffU;
    QTest::newRow("oxygen") << "O" << 0xfff00000U;
    QTest::newRow("sulfur") << "S" << 0xffffc832U;
    QTest::newRow("hydrogen") << "H" << 0xffffffffU;
    QTest::newRow("deuterium") << "D" << 0xffffffffU;
    QTest::newRow("any other") << "Uuo" << 0xffff1493U;
    QTest::newRow("unknown") << "X" << 0xffff1493U;
    QTest::newRow("lower case is no element") << "c" << 0xffff1493U;
}

void BuildingTest::atomsStartInTheColourOfTheirElement() {
    QFETCH(QString, type);
    QFETCH(unsigned int, rgba);
    const QByteArray symbol = type.toLatin1();
    Compound* const atom = makeAtom(space(), 0, "A", symbol.constData());
    QCOMPARE(atom->GetColor().rgba(), rgba);
    atom->SetColor(Color(0x11223344U));
    QCOMPARE(atom->GetColor().rgba(), 0x11223344U);
    atom->RestoreColor();
    QCOMPARE(atom->GetColor().rgba(), rgba);
    QCOMPARE(make(space(), "Surface")->GetColor().rgba(), 0xffffffffU);
}

void BuildingTest::aColourThatWasSetGivesWayToNewValues() {
    Compound* const atom = makeAtom(space());
    atom->SetColor(Color(0x11223344U));
    setAtom(atom, {"", "O", {}, 0.0F, 0});
    QCOMPARE(atom->GetColor().rgba(), 0xfff00000U);
}

void BuildingTest::coloursAndValuesOfOneStepAreTakenBack() {
    Compound* const molecule = make(space(), "Molecule");
    Compound* const first = makeAtom(molecule);
    Compound* const second = makeAtom(molecule);
    first->SetColor(Color(1));
    const QStringList before = test_support::dataLines();
    {
        const DataPointBase guard(nullptr, Publisher::Update, "Change");
        first->SetColor(Color(2));
        second->SetColor(Color(3));
        setAtom(first, {"", "Fe", Vertex(1, 2, 3, true), 12.5F, 0});
        first->SetSelected(true);
        second->SetColor(Color(4));
        first->SetColor(Color(5));
        setAtom(second, {"", "O", {}, 0.0F, 0});
        molecule->SetColor(Color(6));
    }
    const QStringList after = test_support::dataLines();
    QCOMPARE(first->GetColor().rgba(), Color(5).rgba());
    for (int i = 0; i != 2; ++i) {
        QVERIFY(History::undo());
        QCOMPARE(test_support::firstDifference(test_support::dataLines(), before), QString());
        QVERIFY(History::redo());
        QCOMPARE(test_support::firstDifference(test_support::dataLines(), after), QString());
    }
}

void BuildingTest::everyRefusalSaysWhat() {
    QVERIFY(make(nullptr, "Composite", "x") == nullptr);
    QVERIFY(DataMaker::makeSet(makeAtom(space()), "site", {}) == nullptr);
    DataMaker::Destroy(space());
    QCOMPARE(takeMessages(),
             (QStringList{"makeCore: no parent for \"x\"",
                          "makeSet: \"CA\" holds no items, so that \"site\" cannot be made in it",
                          "Destroy: the data space itself stays"}));
}

REGISTER_TEST(BuildingTest)
#include "BuildingTest.moc"
