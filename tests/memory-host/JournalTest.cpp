// What a journal brings back, onto files that are opened again: all that a user could see.
#include "AtomDetails.h"
#include "DataLines.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "FileTestCase.h"
#include "Geometry.h"
#include "History.h"
#include "Sample.h"
#include "files/Saving.h"
#include "items/DataVersion.h"
#include "journal/JournalFolder.h"
#include "journal/Recovery.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <optional>
#include <random>
#include <string_view>
#include <zlib.h>

using namespace file_testing;
using namespace memory_host;
using namespace TAVIK;
using test_support::comparableLines;
using test_support::firstDifference;

namespace {

void change(const std::function<void()>& change) {
    const DataPointBase guard(nullptr, Publisher::Update, "Change");
    QVERIFY(guard.m_good);
    change();
}

Atom* atomAt(std::size_t i, Compound* root = space()) {
    Items atoms;
    GetAtoms(root, atoms, true);
    return dynamic_cast<Atom*>(atoms.at(i));
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

QByteArray unpacked(const QString& path) {
    const gzFile file = gzopen(path.toUtf8().constData(), "rb");
    QByteArray bytes(1 << 20, '\0');
    bytes.resize(std::max(0, gzread(file, bytes.data(), static_cast<unsigned>(bytes.size()))));
    gzclose(file);
    return bytes;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

struct Case {
    std::string_view name;
    std::function<void()> change;
};

// In an entry "1ejg" of one chain with alternative locations, and the entries of two models.
const std::vector<Case>& cases() {
    static const std::vector<Case> all = {
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
        {"a deleted chain", [] { DataMaker::Destroy(item("/1ejg/A")); }},
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
         }},
        {"a closed model", [] { DataMaker::Destroy(space()->ChildBegin()[1]); }},
        {"a made bond", [] { DataMaker::makeBond(item("/1ejg/A/Bonds"), atomAt(0), atomAt(90)); }},
        {"a bond between entries",
         [] { DataMaker::makeBond(space(), atomAt(0), atomAt(0, space()->ChildBegin()[2])); }},
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

bool contains(std::string_view name, std::string_view word) {
    return name.find(word) != std::string_view::npos;
}

const std::function<void()>& changeOf(std::string_view name) {
    return std::ranges::find(cases(), name, &Case::name)->change;
}

} // namespace

class JournalTest : public test_support::TestCase {
    Q_OBJECT

    std::optional<Folder> m_folder;
    std::optional<JournalFolder> m_journal;
    JournalRecovery::Outcome m_outcome;

    std::string path(const QString& name) const {
        return (m_folder->path() + u'/' + name).toStdString();
    }
    std::string copyOf(const QString& name) const {
        QFile::copy(structure(name), m_folder->path() + u'/' + name);
        return path(name);
    }
    void openAll() const {
        openFile(copyOf("1ejg.pdb"));
        std::string models;
        for (int model = 1; model != 3; ++model)
            models += "MODEL        " + std::to_string(model) + "\n" +
                      atomAtText(static_cast<float>(model)) + "ENDMDL\n";
        openFile(m_folder->write("models.pdb", QByteArray::fromStdString(models)));
    }
    static std::string atomAtText(float x) {
        return (::file_testing::atomAt(" CA ", x) + ::file_testing::atomAt(" C  ", x, 1.5F))
            .toStdString();
    }
    void gather() {
        JournalGathering gathering(m_journal->written());
        while (gathering.advance(std::chrono::microseconds(0)) !=
               JournalGathering::Progress::Done) {
        }
        const JournalStatePtr state = gathering.take();
        m_journal->write(*state);
    }
    bool isJournalThere() const { return QFile::exists(journal()); }
    QString journal() const { return QString::fromStdString(m_journal->path()) + "/journal"; }

    /// As a new start does.
    void recover() {
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
    static void clear() {
        const DataPointBase guard(nullptr, Publisher::Delete, "Close");
        while (space()->HasChildren())
            DataMaker::Destroy(*space()->ChildBegin());
    }
    static QStringList unsaved() {
        QStringList names;
        for (const Compound* item : childrenOf(space()))
            if (hasUnsavedData(item))
                names << QString::fromStdString(item->GetName());
        return names;
    }
    void comesBack() {
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

private slots:
    void init() override {
        TestCase::init();
        m_folder.emplace();
        m_journal = JournalFolder::make(path("journal"));
    }
    void cleanup() override {
        m_journal.reset();
        m_folder.reset();
        TestCase::cleanup();
    }

    void whatIsAsReadHasNoJournal() {
        gather();
        QVERIFY(!isJournalThere());
        openAll();
        gather();
        QVERIFY(!isJournalThere());
        change([] { atomAt(3)->SetSelected(true); });
        gather();
        QVERIFY(isJournalThere());
        QVERIFY(History::undo());
        gather();
        QVERIFY(!isJournalThere());
    }

    void eachKindOfChangeComesBack_data() {
        QTest::addColumn<std::size_t>("number");
        for (std::size_t i = 0; i != cases().size(); ++i)
            QTest::newRow(cases()[i].name.data()) << i;
    }
    void eachKindOfChangeComesBack() {
        QFETCH(const std::size_t, number);
        openAll();
        change(cases()[number].change);
        comesBack();
    }

    void allChangesTogetherComeBackTwice() {
        openAll();
        for (const Case& each : cases())
            if (!contains(each.name, "closed") && !contains(each.name, "chain"))
                change(each.change);
        comesBack();
        m_journal = JournalFolder::make(path("journal"));
        comesBack();
    }

    void whatIsBroughtBackIsOneStep() {
        openAll();
        change(changeOf("selection"));
        change([] { DataMaker::Destroy(residueAt(9)); });
        gather();
        clear();
        recover();
        QCOMPARE(History::undoable(1).front().label, std::string("Recovered changes"));
        const QStringList after = comparableLines();
        QVERIFY(History::undo());
        QCOMPARE(comparableLines().filter(" selected").size(), 0);
        QVERIFY(History::redo());
        QCOMPARE(firstDifference(comparableLines(), after), QString());
        QCOMPARE(faults(), QString());
    }

    void aFileThatWasSavedComesBackWithItsFirstText() {
        openAll();
        change([] {
            DataMaker::Destroy(residueAt(1));
            SetAtomPosition(atomAt(0), Vertex(1, 1, 1, true));
        });
        gather();
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        comesBack();
        change([] { DataMaker::Destroy(residueAt(1)); });
        QCOMPARE(unsaved(), QStringList("1ejg"));
        comesBack();
        // What comes back is saved as if nothing had happened.
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        QCOMPARE(unsaved(), QStringList());
    }

    void whatWasSavedAndTakenBackIsUnsaved() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        QVERIFY(History::undo());
        QCOMPARE(unsaved(), QStringList("1ejg"));
        comesBack();
    }

    void anEntryThatWasSavedAsAnotherFileComesBackInThat() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("other.cif"));
        change(changeOf("an entry without a file"));
        saveFile(std::vector<Compound*>{item("/made")}, path("made.pdb"));
        change([] { residueAt(2)->SetSelected(true); });
        comesBack();
    }

    void aFileWhoseEntriesAreClosedIsNotReplacedWithoutThem() {
        openAll();
        change([] {
            DataMaker::Destroy(space()->ChildBegin()[1]);
            DataMaker::Destroy(residueAt(1));
        });
        comesBack();
        QVERIFY_THROWS_EXCEPTION(
            SaveError,
            saveFile(std::vector<Compound*>{space()->ChildBegin()[1]}, path("models.pdb")));
        QVERIFY(!isUnsaved(space()->ChildBegin()[1]));
    }

    void aNameWithANumberStaysWhenTheFirstIsClosed() {
        openAll();
        openFile(path("1ejg.pdb"));
        change([] { DataMaker::Destroy(item("/1ejg")); });
        change([] { residueAt(2)->SetSelected(true); });
        comesBack();
        QVERIFY(item("/1ejg-2"));
    }

    void aMapComesBackWithItsBounds() {
        openFile(copyOf("griddata.dx"));
        change([] {
            auto* const grid = dynamic_cast<Grid*>(*space()->ChildBegin());
            grid->m_upper[2] = 1;
            grid->SetColor(Color(7));
        });
        comesBack();
    }

    void otherValuesOfMapsComeBack() {
        openFile(copyOf("griddata.dx"));
        change([] {
            setGrid(DataMaker::makeGrid(space(), "made", smallGrid()), otherGrid());
            setGrid(*space()->ChildBegin(), otherGrid());
        });
        comesBack();
        change([] { setGrid(*space()->ChildBegin(), smallGrid()); });
        comesBack();
    }

    void aMapWhoseOtherValuesAreMissingIsSaid() {
        openFile(copyOf("griddata.dx"));
        change([] { (*space()->ChildBegin())->SetColor(Color(7)); });
        const QStringList before = comparableLines();
        change([] { setGrid(*space()->ChildBegin(), otherGrid()); });
        gather();
        clear();
        QDir folder(QString::fromStdString(m_journal->path()));
        for (const QString& grid : folder.entryList({"grid-*"}))
            QVERIFY(folder.remove(grid));
        recover();
        QVERIFY(m_outcome.isDone && !m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{"griddata: its values are not brought back, and are "
                                          "those of its file"});
        QCOMPARE(firstDifference(comparableLines(), before), QString());
    }

    // Its values are not kept.
    void aMapThatOthersChangedIsSaidAndLeftOut() {
        openAll();
        openFile(copyOf("griddata.dx"));
        change([] {
            space()->ChildBegin()[3]->SetSelected(true);
            residueAt(2)->SetSelected(true);
        });
        gather();
        clear();
        QVERIFY(write(QString::fromStdString(path("griddata.dx")), "other"));
        recover();
        QVERIFY(m_outcome.isDone && !m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{path("griddata.dx") +
                                          ": the changes to it are not brought back"});
        QCOMPARE(childrenOf(space()).size(), std::size_t{3});
        QVERIFY(residueAt(2)->IsSelected());
        QCOMPARE(faults(), QString());
    }

    void aStructureComesBackAlsoWhenOthersChangedTheFile() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(2)); });
        const QStringList before = comparableLines();
        gather();
        clear();
        QVERIFY(write(QString::fromStdString(path("1ejg.pdb")), "other"));
        recover();
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        QVERIFY(m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{path("1ejg.pdb") +
                                          " is another than when the journal was written; what is "
                                          "open is as it was then"});
        QCOMPARE(unsaved(), QStringList("1ejg"));
        // Saving does not replace it unasked.
        QVERIFY_THROWS_EXCEPTION(SaveError,
                                 saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb")));
    }

    void aMeshThatIsMissingIsCounted() {
        openAll();
        change(changeOf("a surface"));
        gather();
        clear();
        QDir folder(QString::fromStdString(m_journal->path()));
        for (const QString& mesh : folder.entryList({"mesh-*"}))
            QVERIFY(folder.remove(mesh));
        recover();
        QVERIFY(m_outcome.isDone && !m_outcome.isWhole);
        QCOMPARE(m_outcome.lines, std::vector<std::string>{"Not brought back: 1 surface"});
    }

    void meshesAreWrittenOnceAndGoWithTheirSurface() {
        openAll();
        const QDir folder(QString::fromStdString(m_journal->path()));
        const auto meshes = [&folder] { return folder.entryList({"mesh-*"}); };
        change([] { DataMaker::makeSurface(space(), "surface", triangle()); });
        gather();
        const QStringList first = meshes();
        QCOMPARE(first.size(), 1);
        change([] { atomAt(0)->SetSelected(true); });
        gather();
        QCOMPARE(meshes(), first);
        change([] { SetSurfaceColors(dynamic_cast<Surface*>(item("/surface")), {1, 2, 3}); });
        gather();
        QCOMPARE(meshes().size(), 1);
        QVERIFY(meshes() != first);
        comesBack();
        change([] { DataMaker::Destroy(item("/surface")); });
        gather();
        QCOMPARE(meshes(), QStringList());
    }

    void gatheringStopsForAChange() {
        openAll();
        JournalGathering gathering(m_journal->written());
        const DataPointBase guard(nullptr, Publisher::Update, "Change");
        QCOMPARE(gathering.advance(std::chrono::seconds(1)), JournalGathering::Progress::Disturbed);
    }

    void othersDoNotSeeTheJournalOfAProgramThatRuns() {
        openAll();
        change(changeOf("selection"));
        gather();
        const std::string mine = m_journal->path();
        QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        m_journal.reset();
        {
            const auto found = JournalFolder::abandoned(path("journal"));
            QCOMPARE(found.size(), std::size_t{1});
            QCOMPARE(found[0].path(), mine);
            QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        }
        auto found = JournalFolder::abandoned(path("journal"));
        QCOMPARE(found.size(), std::size_t{1});
        found[0].remove();
        QVERIFY(!QFile::exists(QString::fromStdString(mine)));
        QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        QVERIFY(JournalFolder::abandoned(path("nowhere")).empty());
        m_journal = JournalFolder::make(path("journal"));
        m_journal.reset();
        QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        QCOMPARE(QDir(QString::fromStdString(path("journal")))
                     .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList("lock"));
    }

    void aJournalThatIsCutOrDamagedIsRefused() {
        openFile(m_folder->write("one.pdb", QByteArray::fromStdString(atomAtText(1))));
        change([] { atomAt(0)->SetSelected(true); });
        gather();
        const QByteArray whole = contentOf(journal());
        QVERIFY(whole.size() > 50);
        for (qsizetype size = 0; size != whole.size(); ++size) {
            QVERIFY(write(journal(), whole.left(size)));
            QVERIFY_THROWS_EXCEPTION(FileError, JournalRecovery(m_journal->path()));
        }
        QVERIFY(write(journal(), whole));
        const QByteArray content = unpacked(journal());
        for (qsizetype at = 0; at != whole.size(); ++at) {
            QByteArray wrong = whole;
            wrong[at] = static_cast<char>(wrong[at] ^ (1 << at % 8));
            QVERIFY(write(journal(), wrong));
            try {
                const JournalRecovery recovery(m_journal->path());
                QCOMPARE(unpacked(journal()), content); // Not every bit means something.
            } catch (const FileError&) {
            }
        }
        QVERIFY(write(journal(), content));
        QVERIFY_THROWS_EXCEPTION(FileError, JournalRecovery(m_journal->path()));
    }

    // Whatever stands in a journal that is no accident, the data stay sound.
    void aJournalThatSaysOtherThingsDoesNoHarm() {
        openAll();
        for (const Case& each : cases())
            if (!contains(each.name, "closed") && !contains(each.name, "many") &&
                !contains(each.name, "chain"))
                change(each.change);
        gather();
        const QByteArray whole = unpacked(journal());
        clear();
        std::mt19937 random(7);
        int refused = 0;
        constexpr int tries = 60;
        for (int i = 0; i != tries; ++i) {
            QByteArray wrong = whole;
            for (int changes = 1 + static_cast<int>(random() % 3); changes != 0; --changes)
                wrong[static_cast<qsizetype>(random()) % wrong.size()] =
                    static_cast<char>(random());
            QVERIFY(write(journal(), gzipped(wrong)));
            try {
                recover();
            } catch (const FileError&) {
                ++refused;
            }
            QCOMPARE(faults(), QString());
            clear();
            takeMessages();
        }
        QVERIFY2(refused > 5 && refused < tries, qPrintable(QString::number(refused)));
        takeHostLog();
    }

    void gatheringAndWritingMayRunOutOfMemory() {
        openFile(m_folder->write("one.pdb", QByteArray::fromStdString(atomAtText(1))));
        change([] { DataMaker::Destroy(atomAt(0)); });
        for (const char* name : {"an entry without a file", "a grid", "a line"})
            change(changeOf(name));
        int failures = 0;
        for (int granted = 0;; ++granted) {
            bool isWritten = false;
            {
                const FailingMemory memory(granted, 1, 0, FailingMemory::Of::OwnCode);
                try {
                    gather();
                    isWritten = true;
                } catch (const std::bad_alloc&) {
                } catch (const SaveError&) {
                }
                if (FailingMemory::refusals() == 0)
                    break;
            }
            failures += isWritten ? 0 : 1;
        }
        QVERIFY2(failures > 20, qPrintable(QString::number(failures)));
        comesBack();
    }

    void bringingBackMayRunOutOfMemory() {
        openFile(m_folder->write("one.pdb", QByteArray::fromStdString(atomAtText(1))));
        change([] { atomAt(1)->SetSelected(true); });
        change([] { DataMaker::Destroy(atomAt(0)); });
        change(changeOf("an entry without a file"));
        const QStringList after = comparableLines();
        gather();
        clear();
        int failures = 0;
        for (int granted = 0;; ++granted) {
            m_outcome = {};
            JournalRecovery recovery(m_journal->path());
            openFile(recovery.contentPath(0));
            recovery.setOpened(0);
            const QStringList before = comparableLines();
            int refused = 0;
            {
                const FailingMemory memory(granted, 1, 0, FailingMemory::Of::OwnCode);
                try {
                    m_outcome = recovery.apply();
                } catch (const std::bad_alloc&) {
                }
                refused = FailingMemory::refusals();
            }
            QCOMPARE(faults(), QString());
            if (m_outcome.isDone)
                QCOMPARE(firstDifference(comparableLines(), after), QString());
            else
                QCOMPARE(comparableLines().size(), before.size());
            failures += m_outcome.isDone ? 0 : 1;
            clear();
            if (refused == 0)
                break;
        }
        QVERIFY2(failures > 20, qPrintable(QString::number(failures)));
        takeHostLog();
        takeMessages();
    }
};

REGISTER_TEST(JournalTest)
#include "JournalTest.moc"
