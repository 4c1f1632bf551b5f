// The ribbons of the data: which atoms they pass, and that only what changed is made again.
#include "scene/DataReader.h"
#include "scene/SceneMaker.h"

#include "SceneTools.h"
#include "TestSupport.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <stop_token>
#include <thread>

using namespace scene_tools;
using view::Representation;
using view::SceneMaker;

namespace {

const view::Look ribbon{Representation::Ribbon, false, 0xff000000};

std::set<view::Id> idsOf(const view::Mesh& mesh) {
    return {mesh.ids.begin(), mesh.ids.end()};
}
/// The colours in which a mesh of a scene is drawn.
std::set<view::Colour> coloursOf(const view::Scene& scene, const view::Mesh& mesh) {
    std::set<view::Colour> colours;
    for (const view::Id id : mesh.ids)
        colours.insert(scene.idColours->at(id - 1));
    return colours;
}

bool areSame(const view::Scene& a, const view::Scene& b) {
    const auto isSame = [](const auto& one, const auto& other) {
        return one->vertices == other->vertices && one->triangles == other->triangles &&
               one->normals == other->normals && one->ids == other->ids;
    };
    return *a.idColours == *b.idColours && *a.idShown == *b.idShown &&
           std::equal(a.meshes.begin(), a.meshes.end(), b.meshes.begin(), b.meshes.end(), isSame);
}

/// Two chains of four alanines each, 40 Å apart: atoms 0 to 19 and 20 to 39. CA are the second of
/// five.
struct TwoChains {
    TwoChains() {
        auto* const second = TAVIK::DataMaker::makeCore(first.entry, "B", "Molecule");
        auto* const groups = TAVIK::DataMaker::makeCore(second, "Groups", "Composite");
        for (int i = 0; i != 4; ++i)
            first.add("ALA " + std::to_string(i), alanine(3.8F * float(i)));
        first.groups = groups;
        for (int i = 0; i != 4; ++i)
            first.add("ALA " + std::to_string(i), alanine(60 + 3.8F * float(i)));
        first.attach();
    }
    Structure first;
};

} // namespace

class RibbonsTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aChainHasAMeshWithTheIdsAndColoursOfItsAlphaCarbons() {
        TwoChains made;
        made.first.atoms[6]->SetColor(Color(0xff0000ffU));
        view::DataReader reader;
        reader.read();
        const auto scene = SceneMaker().scene(reader.snapshot(), ribbon);
        QCOMPARE(scene->meshes.size(), std::size_t(2));
        const auto id = [](std::size_t atom) { return view::idOf(atom); };
        QCOMPARE(idsOf(*scene->meshes[0]), (std::set<view::Id>{id(1), id(6), id(11), id(16)}));
        QCOMPARE(idsOf(*scene->meshes[1]), (std::set<view::Id>{id(21), id(26), id(31), id(36)}));
        QVERIFY(coloursOf(*scene, *scene->meshes[0]).count(0xff0000ffU));
        QCOMPARE(coloursOf(*scene, *scene->meshes[1]),
                 std::set<view::Colour>{made.first.atoms[1]->GetColor().rgba()});
        QVERIFY(scene->balls.empty() && scene->sticks.empty());
    }

    void coloursNeedNoOtherMeshes() {
        TwoChains made;
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        const auto before = maker.scene(reader.snapshot(), ribbon);
        made.first.atoms[36]->SetColor(Color(0xff00ff00U));
        reader.refresh();
        const auto after = maker.scene(reader.snapshot(), ribbon);
        QCOMPARE(after->meshes, before->meshes);
        QVERIFY(!coloursOf(*before, *before->meshes[1]).count(0xff00ff00U));
        QVERIFY(coloursOf(*after, *after->meshes[1]).count(0xff00ff00U));
    }

    void whatIsHiddenNeedsCapsAlone() {
        TwoChains made;
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        const auto before = maker.scene(reader.snapshot(), ribbon);
        // The ribbon passes the second atom of a residue, and no other.
        made.first.atoms[29]->SetVisible(false);
        reader.refresh();
        QCOMPARE(maker.scene(reader.snapshot(), ribbon)->meshes, before->meshes);
        made.first.atoms[26]->SetVisible(false);
        reader.refresh();
        const auto after = maker.scene(reader.snapshot(), ribbon);
        QCOMPARE(after->meshes.size(), std::size_t(3));
        QCOMPARE(after->meshes[0], before->meshes[0]);
        QCOMPARE(after->meshes[1], before->meshes[1]);
        QCOMPARE(idsOf(*after->meshes[2]), (std::set<view::Id>{view::idOf(21), view::idOf(31)}));
        made.first.atoms[26]->SetVisible(true);
        reader.refresh();
        QCOMPARE(maker.scene(reader.snapshot(), ribbon)->meshes, before->meshes);
    }

    void onlyTheChainWhoseModelChangedIsMadeAgain() {
        TwoChains made;
        for (const int model : {1, 2})
            memory_host::addAtom(made.first.residues[5],
                                 {"CA", "C", TAVIK::Vertex(65.1F, 0.5F, float(model), true), 10.0F,
                                  unsigned(model)});
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        const auto before = maker.scene(reader.snapshot(), ribbon);
        made.first.atoms[26]->SetVisible(false);
        reader.refresh();
        const auto after = maker.scene(reader.snapshot(), ribbon);
        QCOMPARE(after->meshes[0], before->meshes[0]);
        QVERIFY(after->meshes[1] != before->meshes[1]);
        QVERIFY(areSame(*after, *SceneMaker().scene(reader.snapshot(), ribbon)));
        made.first.residues[5]->NextModel();
        reader.refresh();
        const auto next = maker.scene(reader.snapshot(), ribbon);
        QVERIFY(next->meshes[1] != after->meshes[1]);
        QVERIFY(areSame(*next, *SceneMaker().scene(reader.snapshot(), ribbon)));
    }

    void aHiddenResidueLeavesAGap() {
        TwoChains made;
        made.first.residues[1]->SetVisible(false);
        view::DataReader reader;
        reader.read();
        const auto scene = SceneMaker().scene(reader.snapshot(), ribbon);
        QVERIFY(!scene->isShown(view::idOf(6)));
        QVERIFY(scene->isShown(view::idOf(1)) && scene->isShown(view::idOf(11)));
        QCOMPARE(idsOf(*scene->meshes[2]), (std::set<view::Id>{view::idOf(1), view::idOf(11)}));
    }

    void aRibbonGoesAlongTheActiveModel() {
        Structure made;
        made.add("ALA 1", alanine(0));
        std::vector<AtomSpec> atoms = alanine(3.8F);
        for (AtomSpec& atom : atoms)
            atom.model = 1;
        const std::size_t count = atoms.size();
        for (std::size_t i = 0; i != count; ++i) {
            AtomSpec other = atoms[i];
            other.model = 2;
            other.at[2] += 0.5F;
            atoms.push_back(other);
        }
        TAVIK::Compound* residue = made.add("ALA 2", atoms);
        made.add("ALA 3", alanine(7.6F));
        made.attach();
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        QVERIFY(idsOf(*maker.scene(reader.snapshot(), ribbon)->meshes[0]).count(view::idOf(6)));
        residue->NextModel();
        reader.refresh();
        const auto ids = idsOf(*maker.scene(reader.snapshot(), ribbon)->meshes[0]);
        QVERIFY(ids.count(view::idOf(11)) && !ids.count(view::idOf(6)));
    }

    void nucleotidesHaveABandAlongTheirPhosphorus() {
        Structure made;
        for (int i = 0; i != 3; ++i) {
            const float x = 6.0F * float(i);
            made.add("G " + std::to_string(i), {{"P", "P", {x, 0, 0}},
                                                {"C4'", "C", {x + 2, 0, 1}},
                                                {"C3'", "C", {x + 3, 0, 0}},
                                                {"C1'", "C", {x + 3, 1, 0}},
                                                {"N9", "N", {x + 3, 3, 0}},
                                                {"O3'", "O", {x + 4.4F, 0, 0}}});
        }
        made.attach();
        view::DataReader reader;
        reader.read();
        const auto scene = SceneMaker().scene(reader.snapshot(), ribbon);
        QCOMPARE(scene->meshes.size(), std::size_t(1));
        QCOMPARE(idsOf(*scene->meshes[0]), (std::set<view::Id>{1, 7, 13}));
    }

    // The models of 1d3z stand in one place: hydrogen bonds between them would be nonsense.
    void theModelsOfAnEntryHaveTheSameStructureAloneAndTogether() {
        memory_host::openFile(structure("1d3z.pdb").toStdString());
        view::DataReader reader;
        reader.read();
        const std::size_t together =
            SceneMaker().scene(reader.snapshot(), ribbon)->meshes[0]->triangles.size();
        while (space()->ChildEnd() - space()->ChildBegin() > 1)
            TAVIK::DataMaker::Destroy(*(space()->ChildEnd() - 1));
        reader.read();
        QCOMPARE(SceneMaker().scene(reader.snapshot(), ribbon)->meshes.size(), std::size_t(1));
        QCOMPARE(SceneMaker().scene(reader.snapshot(), ribbon)->meshes[0]->triangles.size(),
                 together);
    }

    void aStopRequestEndsTheMakingOfAScene() {
        TwoChains made;
        view::DataReader reader;
        reader.read();
        std::stop_source stop;
        stop.request_stop();
        SceneMaker maker;
        QVERIFY(!maker.scene(reader.snapshot(), ribbon, stop.get_token()));
        QVERIFY(areSame(*maker.scene(reader.snapshot(), ribbon),
                        *SceneMaker().scene(reader.snapshot(), ribbon)));
    }

    // Colours and models change in between, as they do when data come faster than scenes.
    void aSceneThatWasStoppedAnywhereIsWholeTheNextTime() {
        memory_host::openFile(structure("6zu5.cif").toStdString());
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        int stopped = 0;
        for (int i = 0; i != 12; ++i) {
            Items atoms;
            TAVIK::GetAtoms(space(), atoms, true);
            for (std::size_t atom = 0; atom < atoms.size(); atom += 1000)
                atoms[atom + std::size_t(i)]->SetColor(Color(0xff000000U + unsigned(i)));
            reader.refresh();
            if (i % 4 == 0)
                maker = SceneMaker();
            std::stop_source stop;
            std::jthread stopping([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(2 * i));
                stop.request_stop();
            });
            if (!maker.scene(reader.snapshot(), ribbon, stop.get_token()))
                ++stopped;
            if (i % 4 == 3) {
                const auto again = maker.scene(reader.snapshot(), ribbon);
                QVERIFY(areSame(*again, *SceneMaker().scene(reader.snapshot(), ribbon)));
            }
        }
        QVERIFY(stopped > 0);
    }

    void otherRepresentationsHaveNoRibbon() {
        TwoChains made;
        view::DataReader reader;
        reader.read();
        SceneMaker maker;
        QVERIFY(!maker.scene(reader.snapshot(), ribbon)->meshes.empty());
        QVERIFY(maker.scene(reader.snapshot(), {Representation::Spheres, false, 0xff000000})
                    ->meshes.empty());
    }
};

REGISTER_TEST(RibbonsTest)
#include "RibbonsTest.moc"
