#include "JournalTestCase.h"

#include "AtomDetails.h"
#include "DataLines.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Sample.h"
#include "items/DataVersion.h"

#include <QFile>

#include <algorithm>
#include <chrono>
#include <limits>

using namespace file_testing;
using namespace memory_host;
using namespace TAVIK;
using test_support::comparableLines;
using test_support::firstDifference;

namespace journal_testing {

namespace {

Atom* atomIn(Compound* root, std::size_t i) {
    Items atoms;
    GetAtoms(root, atoms, true);
    return dynamic_cast<Atom*>(atoms.at(i));
}

std::string atomsText(float x) {
    return (file_testing::atomAt(" CA ", x) + file_testing::atomAt(" C  ", x, 1.5F)).toStdString();
}

} // namespace

void change(const std::function<void()>& change) {
    const DataPointBase guard(nullptr, Publisher::Update, "Change");
    QVERIFY(guard.m_good);
    change();
}

Atom* atomAt(std::size_t i) {
    return atomIn(space(), i);
}

Compound* residueAt(std::size_t i) {
    Items residues;
    GetResidues(space(), residues, true);
    return residues.at(i);
}

SurfaceMesh triangle() {
    SurfaceMesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    mesh.triangles = {{0, 1, 2}};
    mesh.values = {1, 2, std::numeric_limits<float>::quiet_NaN()};
    mesh.area = 0.5;
    return mesh;
}

GridValues smallGrid() {
    return {{2, 3, 2}, {1, 2, 3}, {{{1, 0, 0}, {0, 1, 0}, {0, 0.5, 1}}}, std::vector<float>(12, 7)};
}

GridValues otherGrid() {
    return {{1, 1, 2}, {3, 2, 1}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {5, 6}};
}

const std::vector<JournalChange>& journalChanges() {
    static const std::vector<JournalChange> all = {
        {"selection", [] { residueAt(3)->SetSelected(true); }},
        {"everything selected", [] { space()->SetSelected(true); }},
        {"hidden", [] { residueAt(4)->SetVisible(false); }},
        {"everything hidden", [] { space()->SetVisible(false); }},
        {"a colour", [] { atomAt(5)->SetColor(Color(0x80102030U)); }},
        {"many colours",
         [] {
             Items atoms;
             GetAtoms(space(), atoms, true);
             for (std::size_t i = 0; i != atoms.size(); ++i)
                 atoms[i]->SetColor(Color(static_cast<unsigned int>(i * 7919)));
             residueAt(2)->SetColor(Color(5));
         }},
        {"a model",
         [] {
             for (std::size_t i = 0; i != 46; ++i)
                 residueAt(i)->NextModel();
         }},
        {"a moved atom", [] { SetAtomPosition(atomAt(7), Vertex(1, 2, 3, true)); }},
        {"an atom without a position", [] { SetAtomPosition(atomAt(8), Vertex()); }},
        {"an atom in another model", [] { SetAtomModel(atomAt(9), 4); }},
        {"an atom of another element",
         [] {
             setAtom(atomAt(11), {.name = {},
                                  .type = "Fe",
                                  .position = Vertex(3, 2, 1, true),
                                  .temperature = 1.5F,
                                  .model = 2,
                                  .partial = {},
                                  .details = {0.25F, 4711, 3, 'Q', true}});
         }},
        {"an atom with another temperature factor",
         [] {
             Atom* const atom = atomAt(12);
             setAtom(atom, {.name = {},
                            .type = atom->GetType(),
                            .position = atom->GetPosition(),
                            .temperature = 99.5F,
                            .model = 0,
                            .partial = {},
                            .details = GetAtomDetails(atom)});
             atom->SetColor(Color(77));
         }},
        {"a deleted atom", [] { DataMaker::Destroy(atomAt(10)); }},
        {"deleted residues",
         [] {
             DataMaker::Destroy(residueAt(20));
             DataMaker::Destroy(residueAt(0));
         }},
        {"a deleted bond", [] { DataMaker::Destroy(item("/1ejg/A/Bonds")->ChildBegin()[3]); }},
        {"a deleted chain", [] { DataMaker::Destroy(item("/1ejg/A")); }, true},
        {"an emptied composite",
         [] {
             const Items bonds = childrenOf(item("/1ejg/A/Bonds"));
             for (Compound* bond : bonds)
                 DataMaker::Destroy(bond);
             item("/1ejg/A/Bonds")->SetSelected(true);
             item("/1ejg/A/Bonds")->SetVisible(false);
         }},
        {"a closed entry",
         [] {
             DataMaker::Destroy(*space()->ChildBegin());
             atomAt(0)->SetSelected(true);
         },
         true},
        {"a closed model", [] { DataMaker::Destroy(space()->ChildBegin()[1]); }, true},
        {"a made bond", [] { DataMaker::makeBond(item("/1ejg/A/Bonds"), atomAt(0), atomAt(90)); }},
        {"a bond between entries",
         [] { DataMaker::makeBond(space(), atomAt(0), atomIn(space()->ChildBegin()[2], 0)); }},
        {"a bond without atoms", [] { make(space(), "Bond", "lonely"); }},
        {"a made atom",
         [] {
             AtomValues values{.name = "XX", .type = "Fe", .position = Vertex(9, 8, 7, true)};
             values.temperature = 3.5F;
             values.partial = {0.25F, 1.5F, true};
             values.details = {0.5F, 77, -2, 'B', true};
             values.model = 3;
             Atom* const atom = DataMaker::makeAtom(residueAt(5), values);
             DataMaker::makeBond(item("/1ejg/A/Bonds"), atom, atomAt(0));
             atom->SetSelected(true);
         }},
        {"a made chain",
         [] {
             Compound* const chain = make(*space()->ChildBegin(), "Molecule", "Z");
             Compound* const residue = make(chain, "Residue", "LIG 1");
             setLabelIds(residue, {"Q", "12"});
             makeAtom(make(residue, "Group", "Side chain"));
             makeAtom(residue, 2);
             makeAtom(residue, 1);
             dynamic_cast<Residue*>(residue)->FirstModel();
             residue->SetColor(Color(9));
         }},
        {"an entry without a file",
         [] {
             Compound* const entry = make(space(), "Composite", "made");
             makeAtom(make(entry, "Residue", "UNL 1"));
             make(entry, "Composite", "empty")->SetVisible(false);
         }},
        {"a set",
         [] {
             Compound* const set = DataMaker::makeSet(item("/1ejg/A"), "set",
                                                      {residueAt(7), atomAt(99), residueAt(2)});
             set->SetSelected(true);
             set->SetColor(Color(1));
             DataMaker::makeSet(space(), "empty", {})->SetVisible(false);
         }},
        {"a surface",
         [] {
             SurfaceMesh mesh = triangle();
             mesh.atoms = {atomAt(4)->GetId(), 0, 99999999};
             mesh.colors = {1, 2, 3};
             mesh.scale = {"Potential", -1.0F, 1.0F, {4, 5, 6}};
             DataMaker::makeSurface(space(), "surface", mesh)->SetVisible(false);
             make(space(), "Surface", "without");
         }},
        {"a grid",
         [] {
             Grid* const grid = DataMaker::makeGrid(space(), "grid", smallGrid());
             grid->m_lower[1] = 1;
             grid->m_upper[0] = 1;
             make(space(), "Grid", "without");
         }},
        {"a line",
         [] {
             DataMaker::makePolyLine(space(), "line", {Vertex(1, 2, 3, true), Vertex()})
                 ->SetColor(Color(3));
         }},
    };
    return all;
}

const std::function<void()>& changeOf(std::string_view name) {
    return std::ranges::find(journalChanges(), name, &JournalChange::name)->change;
}

void JournalTestCase::init() {
    TestCase::init();
    m_folder.emplace();
    m_journal = JournalFolder::make(path("journal"));
}

void JournalTestCase::cleanup() {
    m_journal.reset();
    m_folder.reset();
    TestCase::cleanup();
}

std::string JournalTestCase::copyOf(const QString& name) const {
    QFile::copy(structure(name), m_folder->path() + u'/' + name);
    return path(name);
}

void JournalTestCase::openAll() const {
    openFile(copyOf("1ejg.pdb"));
    std::string models;
    for (int model = 1; model != 3; ++model)
        models += "MODEL        " + std::to_string(model) + "\n" +
                  atomsText(static_cast<float>(model)) + "ENDMDL\n";
    openFile(m_folder->write("models.pdb", QByteArray::fromStdString(models)));
}

void JournalTestCase::openSmall() const {
    openFile(m_folder->write("one.pdb", QByteArray::fromStdString(atomsText(1))));
}

void JournalTestCase::gather() {
    JournalGathering gathering(m_journal->written());
    while (gathering.advance(std::chrono::microseconds(0)) != JournalGathering::Progress::Done) {
    }
    const JournalStatePtr state = gathering.take();
    m_journal->write(*state);
}

bool JournalTestCase::isJournalThere() const {
    return QFile::exists(journal());
}

void JournalTestCase::recover() {
    JournalRecovery recovery(m_journal->path());
    for (std::size_t file = 0; file != recovery.fileCount(); ++file) {
        const std::string content = recovery.contentPath(file);
        if (content.empty())
            continue;
        openFile(content);
        recovery.setOpened(file);
    }
    m_outcome = recovery.apply();
}

void JournalTestCase::clear() {
    const DataPointBase guard(nullptr, Publisher::Delete, "Close");
    while (space()->HasChildren())
        DataMaker::Destroy(*space()->ChildBegin());
}

QStringList JournalTestCase::unsaved() {
    QStringList names;
    for (const Compound* item : childrenOf(space()))
        if (hasUnsavedData(item))
            names << QString::fromStdString(item->GetName());
    return names;
}

QStringList JournalTestCase::entryNames() {
    QStringList names;
    for (const Compound* item : childrenOf(space()))
        names << QString::fromStdString(item->GetName());
    return names;
}

void JournalTestCase::comesBack() {
    const QStringList before = comparableLines();
    const QStringList unsavedBefore = unsaved();
    gather();
    QVERIFY(isJournalThere());
    clear();
    recover();
    QCOMPARE(firstDifference(comparableLines(), before), QString());
    QCOMPARE(unsaved(), unsavedBefore);
    QCOMPARE(faults(), QString());
    QVERIFY(m_outcome.isDone && m_outcome.isWhole && m_outcome.lines.empty());
}

} // namespace journal_testing
