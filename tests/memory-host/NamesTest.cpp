// Names, qualified names, types and identifiers, as this host chooses them.
#include "Ancestry.h"
#include "Sample.h"
#include "TestSupport.h"
#include "items/ItemName.h"

#include <random>
#include <set>

using namespace memory_host;
using namespace TAVIK;

class NamesTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void theSpaceHasNoName();
    void anAtomsQualifiedNameLeavesItsGroupOut();
    void everyLevelButTheGroupIsNamed();
    void namesOfADetachedBranchBeginAtItsRoot();
    void aBondInAResidueIsNamedByItsAtoms();
    void aBondBetweenResiduesNamesBoth();
    void aBondOutsideOfResiduesIsNamedByItsAtomsAlone();
    void aBondThatWasGivenANameKeepsIt();
    void aBondWithoutAtomsHasNoName();
    void everyTypeIsTheNameOfTheKind();
    void anAtomWithoutValuesIsOfUnknownType();
    void anAtomTakesItsTypeFromItsValues();
    void identifiersRiseInOrderOfCreationAlsoWhenDetached();
    void oddNamesAreMadeComponents();
    void namesOfItemsThatAreGoneAreGivenBack();
    void aNameStaysWithTheLastItemThatHasIt();
    void aTypeIsGivenBackWithTheLastAtomThatHasIt();
    void namesStayRightWhileOthersComeAndGo();
};

void NamesTest::theSpaceHasNoName() {
    QCOMPARE(space()->GetName(), std::string());
    QCOMPARE(space()->GetFQName(), std::string());
    QCOMPARE(space()->GetId(), 0U);
}

void NamesTest::anAtomsQualifiedNameLeavesItsGroupOut() {
    const Sample sample;
    QCOMPARE(sample.atoms[1]->GetFQName(), std::string("/1abc/A/Groups/ALA 1/CA"));
    QCOMPARE(sample.atoms[7]->GetFQName(), std::string("/1abc/A/Groups/ALA 2/CB"));
}

void NamesTest::everyLevelButTheGroupIsNamed() {
    const Sample sample;
    QCOMPARE(sample.entry->GetFQName(), std::string("/1abc"));
    QCOMPARE(sample.chain->GetFQName(), std::string("/1abc/A"));
    QCOMPARE(sample.residues[1]->GetFQName(), std::string("/1abc/A/Groups/ALA 2"));
    QCOMPARE(sample.groups[1]->GetFQName(), std::string("/1abc/A/Groups/ALA 1/Side chain"));
    QCOMPARE(sample.bonds[0]->GetFQName(), std::string("/1abc/A/Bonds/ALA 1 N-CA"));
    Compound* const inner = make(make(space(), "Group", "outer"), "Residue", "inner");
    QCOMPARE(makeAtom(inner)->GetFQName(), std::string("/inner/CA"));
    QCOMPARE(inner->GetFQName(), std::string("/inner"));
}

void NamesTest::namesOfADetachedBranchBeginAtItsRoot() {
    Compound* const root = makeDetached("aside", "Composite");
    Compound* const atom = makeAtom(make(root, "Residue", "ALA 1"));
    QCOMPARE(atom->GetFQName(), std::string("/aside/ALA 1/CA"));
    QVERIFY(TAVIK::GetParent(root) == nullptr);
    DataMaker::Destroy(root);
}

void NamesTest::aBondInAResidueIsNamedByItsAtoms() {
    const Sample sample;
    QCOMPARE(sample.bonds[2]->GetName(), std::string("ALA 1 CA-CB"));
}

void NamesTest::aBondBetweenResiduesNamesBoth() {
    const Sample sample;
    QCOMPARE(sample.bonds[3]->GetName(), std::string("ALA 1 C - ALA 2 N"));
}

void NamesTest::aBondOutsideOfResiduesIsNamedByItsAtomsAlone() {
    Compound* const a = makeAtom(space(), 0, "O1");
    Compound* const b = makeAtom(space(), 0, "O2");
    QCOMPARE(addBond(space(), a, b)->GetName(), std::string("O1-O2"));
    Compound* const c = makeAtom(make(space(), "Residue", "HOH 1"), 0, "O");
    QCOMPARE(addBond(space(), a, c)->GetName(), std::string("O1 - HOH 1 O"));
}

void NamesTest::aBondThatWasGivenANameKeepsIt() {
    QCOMPARE(make(space(), "Bond", "bridge")->GetName(), std::string("bridge"));
}

void NamesTest::aBondWithoutAtomsHasNoName() {
    QCOMPARE(make(space(), "Bond", "")->GetName(), std::string());
}

void NamesTest::everyTypeIsTheNameOfTheKind() {
    for (const char* kind :
         {"Composite", "Molecule", "Residue", "Group", "Bond", "Surface", "Grid"})
        QCOMPARE(make(space(), kind)->GetType(), std::string(kind));
    QCOMPARE(DataMaker::makePolyLine(space(), "line", {})->GetType(), std::string("PolyLine"));
    QCOMPARE(DataMaker::makeSet(space(), "set", {})->GetType(), std::string("Set"));
    QCOMPARE(space()->GetType(), std::string("Space"));
}

void NamesTest::anAtomWithoutValuesIsOfUnknownType() {
    Compound* const atom = make(space(), "Atom", "Q");
    QCOMPARE(atom->GetType(), std::string("X"));
    QCOMPARE(dynamic_cast<Atom*>(atom)->GetModelNumber(), std::string("0"));
    QCOMPARE(dynamic_cast<Atom*>(atom)->GetTemperature(), 0.0F);
}

void NamesTest::anAtomTakesItsTypeFromItsValues() {
    Compound* const atom = make(space(), "Atom", "Q");
    setAtom(atom, {"ignored", "Fe", Vertex(1, 2, 3, true), 12.5F, 0});
    QCOMPARE(atom->GetName(), std::string("Q"));
    QCOMPARE(atom->GetType(), std::string("Fe"));
    QVERIFY(atom->GetPosition().isValid());
    QCOMPARE(dynamic_cast<Atom*>(atom)->GetTemperature(), 12.5F);
}

void NamesTest::identifiersRiseInOrderOfCreationAlsoWhenDetached() {
    Compound* const detached = makeDetached("aside", "Composite");
    Compound* const later = make(space(), "Composite");
    attach(detached, space());
    QVERIFY(detached->GetId() < later->GetId());
    QCOMPARE(make(space(), "Composite")->GetId(), later->GetId() + 1);
}

void NamesTest::oddNamesAreMadeComponents() {
    QCOMPARE(makeAtom(space(), 0, "O/1\n")->GetName(), std::string("O_1_"));
    QCOMPARE(makeAtom(space(), 0, "O5'\xb5")->GetName(), std::string("O5'\xb5"));
    QCOMPARE(DataMaker::makeGrid(space(), "a/b", {{1, 1, 1}, {}, {}, {0.0F}})->GetName(),
             std::string("a_b"));
}

void NamesTest::namesOfItemsThatAreGoneAreGivenBack() {
    const std::size_t before = nameCount();
    Compound* const box = make(space(), "Composite", "box");
    for (int i = 0; i != 5000; ++i)
        make(box, i % 2 ? "Composite" : "Surface", "name " + std::to_string(i));
    DataMaker::makeSet(box, "set", {box});
    DataMaker::makePolyLine(box, "line", {});
    DataMaker::makeGrid(box, "grid", {{1, 1, 1}, {}, {}, {0.0F}});
    QCOMPARE(nameCount(), before + 5004);
    DataMaker::Destroy(box);
    QCOMPARE(nameCount(), before);
    // What is refused leaves no name behind, either.
    make(space(), "Planet", "refused");
    make(make(space(), "Group", "outer"), "Group", "refused");
    takeMessages();
    QCOMPARE(nameCount(), before + 1);
}

void NamesTest::aNameStaysWithTheLastItemThatHasIt() {
    const std::size_t before = nameCount();
    Compound* const first = make(space(), "Composite", "shared");
    Compound* const second = make(space(), "Surface", "shared");
    QCOMPARE(nameCount(), before + 1);
    DataMaker::Destroy(first);
    QCOMPARE(nameCount(), before + 1);
    QCOMPARE(second->GetName(), std::string("shared"));
    DataMaker::Destroy(second);
    QCOMPARE(nameCount(), before);
    QCOMPARE(make(space(), "Composite", "shared")->GetName(), std::string("shared"));
}

void NamesTest::aTypeIsGivenBackWithTheLastAtomThatHasIt() {
    Compound* const atom = make(space(), "Atom", "Q");
    const std::size_t before = nameCount();
    for (int i = 0; i != 100; ++i) {
        const std::string type = "T" + std::to_string(i);
        setAtom(atom, {"", type, {}, 0.0F, 0});
        QCOMPARE(atom->GetType(), type);
        QVERIFY(nameCount() <= before + 1);
    }
    DataMaker::Destroy(atom);
    Compound* const iron = make(space(), "Atom", "Q");
    setAtom(iron, {"", "Fe", {}, 0.0F, 0});
    // The colours of elements do not depend on what came before.
    QCOMPARE(iron->GetColor().rgba(), 0xffffa500U);
    QVERIFY(nameCount() <= before);
}

void NamesTest::namesStayRightWhileOthersComeAndGo() {
    std::mt19937 random(3);
    const std::size_t before = nameCount();
    std::vector<std::pair<Compound*, std::string>> items;
    for (int step = 0; step != 40'000; ++step) {
        // Long stretches of growth and of shrinking, past the sizes at which memory is given back.
        const bool grows = step / 10'000 % 2 == 0;
        if (items.empty() || random() % 4 < (grows ? 3U : 1U)) {
            const std::string name(1 + random() % 40, static_cast<char>('a' + random() % 26));
            const std::string full = name + std::to_string(random() % 3000);
            items.emplace_back(make(space(), "Surface", full), full);
        } else {
            std::swap(items[random() % items.size()], items.back());
            QCOMPARE(items.back().first->GetName(), items.back().second);
            DataMaker::Destroy(items.back().first);
            items.pop_back();
        }
    }
    std::set<std::string> names;
    for (const auto& [item, name] : items) {
        QCOMPARE(item->GetName(), name);
        names.insert(name);
    }
    QCOMPARE(nameCount(), before + names.size());
    for (const auto& [item, name] : items)
        DataMaker::Destroy(item);
    QCOMPARE(nameCount(), before);
}

REGISTER_TEST(NamesTest)
#include "NamesTest.moc"
