// Which atoms a surface is made of, and how large they are.
#include "ShownAtoms.h"
#include "Ancestry.h"
#include "CommandCase.h"
#include "files/Files.h"

using namespace command_case;
using solid::EntryAtoms;
using solid::readShownAtoms;

namespace {

QStringList entries() {
    QStringList names;
    for (const EntryAtoms& atoms : readShownAtoms())
        names << QString::fromStdString(atoms.name);
    return names;
}

std::vector<float> radii() {
    std::vector<float> all;
    for (const EntryAtoms& atoms : readShownAtoms())
        for (const solid::Ball& ball : atoms.balls)
            all.push_back(ball.radius);
    return all;
}

std::size_t count() {
    std::size_t sum = 0;
    for (const EntryAtoms& atoms : readShownAtoms())
        sum += atoms.balls.size();
    return sum;
}

const std::vector<AtomSpec> glycine = {{"N", "N", {0, 0, 0}},
                                       {"CA", "C", {1.5F, 0, 0}},
                                       {"C", "C", {2, 1.4F, 0}},
                                       {"O", "O", {1.2F, 2.3F, 0}}};

} // namespace

class ShownAtomsTest : public CommandCase {
    Q_OBJECT
private slots:
    void allThatIsKnownOfAnAtomIsRead() {
        Compound* const entry = addCopper("one", {1, 2, 3});
        Compound* const atom = atomsIn(entry).front();
        atom->SetColor(Color(0xff123456U));
        const std::vector<EntryAtoms> all = readShownAtoms();
        QCOMPARE(all.size(), std::size_t(1));
        QCOMPARE(all[0].entry, entry);
        QCOMPARE(all[0].balls.size(), std::size_t(1));
        QVERIFY((all[0].balls[0].centre == solid::Point{1, 2, 3}));
        QCOMPARE(all[0].balls[0].radius, float(copperRadius));
        QCOMPARE(all[0].colors, std::vector<std::uint32_t>{0xff123456U});
        QCOMPARE(all[0].atoms, std::vector<unsigned int>{atom->GetId()});
        QCOMPARE(all[0].elements, std::vector<std::uint8_t>{29});
    }

    void hiddenAtomsAndThoseWithoutAPlaceAreLeftOut() {
        Compound* const entry = addEntry("one", "GLY 1", glycine);
        atomsIn(entry)[1]->SetVisible(false);
        QCOMPARE(count(), std::size_t(3));
        TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(atomsIn(entry)[2]), {});
        QCOMPARE(count(), std::size_t(2));
        entry->SetVisible(false);
        QVERIFY(readShownAtoms().empty());
    }

    void theEntriesInWhichSomethingIsSelectedElseAll() {
        Compound* const one = addCopper("one");
        addCopper("two");
        QCOMPARE(entries(), QStringList({"one", "two"}));
        atomsIn(one).front()->SetSelected(true);
        QCOMPARE(entries(), QStringList("one"));
        // What is selected there need not be shown.
        one->SetVisible(false);
        QCOMPARE(entries(), QStringList());
    }

    void whoSelectsNoAtomsMeansAll() {
        addCopper("one");
        addDistances()->SetSelected(true);
        QCOMPARE(entries(), QStringList("one"));
    }

    void unitedRadiiStandForHydrogensThatAreMissing() {
        Compound* const entry = addEntry("one", "GLY 1", glycine);
        const std::vector<float> united = {1.64F, 1.88F, 1.61F, 1.42F};
        QCOMPARE(radii(), united);
        QCOMPARE(readShownAtoms()[0].united, std::size_t(4));
        // A residue with hydrogens beside it changes nothing, and has radii by its elements.
        std::vector<AtomSpec> whole = glycine;
        whole.push_back({"HA2", "H", {1.8F, -0.9F, 0.5F}});
        addResidue(entry, "GLY 2", whole);
        std::vector<float> both = united;
        both.insert(both.end(), {1.55F, 1.70F, 1.70F, 1.52F, 1.10F});
        QCOMPARE(radii(), both);
        QCOMPARE(readShownAtoms()[0].united, std::size_t(4));
        // Hidden hydrogens are not missing.
        atomsIn(entry)[8]->SetVisible(false);
        both.pop_back();
        QCOMPARE(radii(), both);
    }

    void radiiOfTheFileComeFirst() {
        Compound* const entry = addEntry("one", "GLY 1", glycine);
        Compound* const residue = TAVIK::GetParent(atomsIn(entry).front());
        TAVIK::AtomValues values;
        values.name = "CA";
        values.type = "C";
        values.position = {1, 2, 3, true};
        values.partial = {-0.25F, 2.5F, true};
        QVERIFY(TAVIK::DataMaker::makeAtom(residue, values));
        values.partial.radius = 0;
        QVERIFY(TAVIK::DataMaker::makeAtom(residue, values));
        QCOMPARE(radii(), (std::vector<float>{1.64F, 1.88F, 1.61F, 1.42F, 2.5F, 0}));
    }

    void deuteriumIsHydrogen() {
        addEntry("one", "GLY 1", {{"CA", "C", {0, 0, 0}}, {"D", "D", {1, 0, 0}}});
        QCOMPARE(radii(), (std::vector<float>{1.70F, 1.10F}));
    }

    void ligandsAndUnknownElementsHaveRadiiByElement() {
        addEntry("one", "HEM 1",
                 {{"FE", "Fe", {0, 0, 0}}, {"CHA", "C", {3, 0, 0}}, {"Q", "X", {9, 0, 0}}});
        QCOMPARE(radii(), (std::vector<float>{2.00F, 1.70F, 2.00F}));
    }

    void watersOnlyWhereTheyAreSelected() {
        Compound* const entry = addEntry("one", "GLY 1", glycine);
        Compound* const water = addResidue(entry, "HOH 2", {{"O", "O", {9, 9, 9}}});
        QCOMPARE(count(), std::size_t(4));
        water->SetSelected(true);
        QCOMPARE(count(), std::size_t(5));
    }

    void atomsOutsideOfResiduesCountToo() {
        addCopper("one");
        Compound* const loose = TAVIK::DataMaker::makeCore(space(), "loose", "Composite");
        TAVIK::DataMaker::makeAtom(loose, {"C1", "C", TAVIK::Vertex(0, 0, 0, true)});
        TAVIK::DataMaker::makeAtom(space(), {"N1", "N", TAVIK::Vertex(5, 0, 0, true)});
        QCOMPARE(entries(), QStringList({"one", "loose", "N1"}));
        QCOMPARE(radii(), (std::vector<float>{1.40F, 1.70F, 1.55F}));
    }

    void oneConformationOfAlternativesIsRead() {
        Compound* const entry = addEntry("one", "SER 1", {{"CA", "C", {0, 0, 0}}});
        Compound* const residue = *(*entry->ChildBegin())->ChildBegin();
        for (const unsigned model : {1U, 2U})
            TAVIK::DataMaker::makeAtom(
                residue, {"OG", "O", TAVIK::Vertex(float(model), 2, 0, true), 20.0F, model});
        QCOMPARE(count(), std::size_t(2));
        residue->NextModel();
        QCOMPARE(readShownAtoms()[0].balls[1].centre[0], 2.0F);
    }

    void ofTheSampleAllThatIsShownButTheWatersIsRead() {
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        std::size_t shown = 0;
        std::size_t waters = 0;
        for (const Compound* atom : atomsIn(space()))
            if (atom->IsVisible()) {
                ++shown;
                waters += atom->GetFQName().find("/HOH ") != std::string::npos;
            }
        QVERIFY(waters > 0 && shown < atomsIn(space()).size());
        QCOMPARE(count(), shown - waters);
    }
};

REGISTER_TEST(ShownAtomsTest)
#include "ShownAtomsTest.moc"
