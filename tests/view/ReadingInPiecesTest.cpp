// Reading the data space in pieces: as if in one, whatever happens between two of them.
#include "scene/DataReader.h"

#include "Ancestry.h"
#include "AtomDetails.h"
#include "Geometry.h"
#include "SceneTools.h"
#include "TestSupport.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <thread>

using namespace scene_tools;
using view::DataReader;
using State = view::DataReader::State;
using What = view::DataReader::What;

namespace {

constexpr std::chrono::microseconds shortest(0);

/// Reads the rest in the smallest pieces; returns how many these were.
int readOn(DataReader& reader) {
    int pieces = 1;
    for (; reader.advance(shortest) != State::Done; ++pieces)
        std::this_thread::yield();
    return pieces;
}

template <class T> bool isSame(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

bool isSame(const view::ResidueEntry& a, const view::ResidueEntry& b) {
    return a.firstAtom == b.firstAtom && a.chain == b.chain && a.kind == b.kind &&
           a.isStandard == b.isStandard && a.isProline == b.isProline &&
           a.isPolymer == b.isPolymer && a.isLinkedToPrevious == b.isLinkedToPrevious;
}

bool isSame(const view::Shape& a, const view::Shape& b) {
    return a.item == b.item && isSame(a.points, b.points) && isSame(a.segments, b.segments) &&
           bool(a.mesh) == bool(b.mesh) &&
           (!a.mesh ||
            (isSame(a.mesh->vertices, b.mesh->vertices) &&
             isSame(a.mesh->normals, b.mesh->normals) &&
             isSame(a.mesh->triangles, b.mesh->triangles) &&
             isSame(a.mesh->colours, b.mesh->colours) && isSame(a.mesh->ids, b.mesh->ids)));
}

bool isSame(const view::Contents& a, const view::Contents& b) {
    const auto all = [](const auto& one, const auto& other) {
        return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                          [](const auto& x, const auto& y) { return isSame(x, y); });
    };
    return isSame(a.positions, b.positions) && isSame(a.atomicNumbers, b.atomicNumbers) &&
           isSame(a.roles, b.roles) && all(a.residues, b.residues) &&
           isSame(a.entries, b.entries) && isSame(a.bonds, b.bonds) && all(a.shapes, b.shapes);
}

/// Whether a reader has what one has that reads now and in one piece.
bool isAsInOnePiece(const DataReader& reader) {
    DataReader other;
    other.read();
    const view::Snapshot& one = reader.snapshot();
    const view::Snapshot& two = other.snapshot();
    for (std::size_t i = 0; i != two.contents->itemCount(); ++i)
        if (reader.item(view::idOf(i), one.generation) != other.item(view::idOf(i), two.generation))
            return false;
    return isSame(*one.contents, *two.contents) && *one.marks == *two.marks &&
           *one.selection == *two.selection;
}

Items atomsOf(TAVIK::Compound* item) {
    Items atoms;
    TAVIK::GetAtoms(item, atoms, true);
    return atoms;
}

/// Colours, hides and selects some atoms, differently in each turn.
void changeLooks(const Items& atoms, std::size_t turn) {
    for (std::size_t i = turn; i < atoms.size(); i += 7) {
        atoms[i]->SetColor(Color(0xff000000U + static_cast<unsigned>(i * 31 + turn)));
        atoms[i]->SetVisible(i % 3 != turn % 3);
        atoms[i]->SetSelected(i % 2 == turn % 2);
    }
}

void addShapes() {
    TAVIK::SurfaceMesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.normals.assign(3, {0, 0, 1});
    mesh.triangles = {{0, 1, 2}};
    TAVIK::DataMaker::makeSurface(space(), "surface", mesh);
}

/// A strip of so many triangles.
TAVIK::SurfaceMesh strip(std::uint32_t triangles) {
    TAVIK::SurfaceMesh mesh;
    for (std::uint32_t i = 0; i != triangles + 2; ++i) {
        mesh.vertices.push_back({static_cast<float>(i / 2), static_cast<float>(i % 2), 0});
        mesh.normals.push_back({0, 0, 1});
        mesh.colors.push_back(0xff000000U + i);
        if (i >= 2)
            mesh.triangles.push_back({i - 2, i - 1, i});
    }
    return mesh;
}

} // namespace

class ReadingInPiecesTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void nothingIsReadBeforeItIsBegun() {
        DataReader reader;
        QVERIFY(!reader.isReading());
        QCOMPARE(reader.advance(shortest), State::Done);
        QCOMPARE(reader.snapshot().generation, std::uint64_t(0));
    }

    void arraysAreTheSameAsFromOnePiece() {
        addShapes();
        for (const char* const file : {"1tii.pdb", "1d3z.pdb", "6zu5.cif"})
            memory_host::openFile(structure(file).toStdString());
        addShapes();
        changeLooks(atomsOf(space()), 1);
        DataReader reader;
        reader.begin(What::Everything);
        QVERIFY(reader.isReading());
        QVERIFY(readOn(reader) > 50);
        QVERIFY(!reader.isReading());
        QVERIFY(isAsInOnePiece(reader));
        changeLooks(atomsOf(space()), 2);
        reader.begin(What::Looks);
        QVERIFY(readOn(reader) > 50);
        QVERIFY(isAsInOnePiece(reader));
    }

    void aLargeMeshIsReadAndComparedInPieces() {
        TAVIK::SurfaceMesh mesh = strip(300'000);
        auto* const surface =
            dynamic_cast<TAVIK::Surface*>(TAVIK::DataMaker::makeSurface(space(), "large", mesh));
        addShapes();
        DataReader reader;
        reader.begin(What::Everything);
        QVERIFY(readOn(reader) > 50);
        QVERIFY(isAsInOnePiece(reader));
        const std::uint64_t generation = reader.snapshot().generation;
        reader.begin(What::Looks);
        QVERIFY(readOn(reader) > 50);
        QCOMPARE(reader.snapshot().generation, generation);
        // The last of each array.
        const std::function<void()> changes[] = {
            [&] { mesh.vertices.back()[1] = 7; },  [&] { mesh.normals.back() = {1, 0, 0}; },
            [&] { mesh.triangles.back()[0] = 0; }, [&] { mesh.colors.back() = 1; },
            [&] { mesh.colors.clear(); },          [&] { mesh = strip(300'001); }};
        std::uint64_t before = generation;
        for (const auto& change : changes) {
            change();
            TAVIK::SetSurfaceMesh(surface, mesh);
            reader.begin(What::Looks);
            readOn(reader);
            QCOMPARE(reader.snapshot().generation, before + 1);
            before = reader.snapshot().generation;
            QVERIFY(isAsInOnePiece(reader));
        }
    }

    void aMeshThatIsReplacedBetweenPiecesIsRightAfterTheNextReading() {
        auto* const surface = dynamic_cast<TAVIK::Surface*>(
            TAVIK::DataMaker::makeSurface(space(), "large", strip(100'000)));
        for (const std::uint32_t size : {50'000U, 200'000U, 1U, 100'000U}) {
            for (const int before : {1, 5, 20, 40}) {
                DataReader reader;
                TAVIK::SetSurfaceMesh(surface, strip(100'000));
                reader.begin(What::Everything);
                for (int i = 0; i != before; ++i)
                    reader.advance(shortest);
                TAVIK::SetSurfaceMesh(surface, strip(size));
                readOn(reader);
                const auto mesh = reader.snapshot().contents->shapes[0].mesh;
                for (const auto& triangle : mesh->triangles)
                    for (const std::uint32_t corner : triangle)
                        QVERIFY(corner < mesh->vertices.size());
                reader.begin(What::Looks);
                readOn(reader);
                QVERIFY(isAsInOnePiece(reader));
            }
        }
    }

    void theSnapshotStaysUntilAllIsRead() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        DataReader reader;
        reader.begin(What::Everything);
        State state = State::Due;
        while ((state = reader.advance(shortest)) != State::Done)
            QCOMPARE(reader.snapshot().generation, std::uint64_t(0));
        const view::Snapshot before = reader.snapshot();
        changeLooks(atomsOf(space()), 1);
        reader.begin(What::Looks);
        while ((state = reader.advance(shortest)) != State::Done) {
            QCOMPARE(reader.snapshot().marks, before.marks);
            QCOMPARE(reader.snapshot().selection, before.selection);
        }
        QVERIFY(reader.snapshot().marks != before.marks);
        QVERIFY(reader.snapshot().selection != before.selection);
        QCOMPARE(reader.snapshot().contents, before.contents);
    }

    void theRestMayBeReadInOnePiece() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        DataReader reader;
        for (const What what : {What::Everything, What::Looks}) {
            changeLooks(atomsOf(space()), std::size_t(what));
            reader.begin(what);
            QCOMPARE(reader.advance(shortest), State::Due);
            reader.finish();
            QVERIFY(!reader.isReading());
            QVERIFY(isAsInOnePiece(reader));
        }
    }

    void anotherThreadPutsTogetherWhatIsMuch() {
        memory_host::openFile(structure("6zu5.cif").toStdString());
        DataReader reader;
        reader.begin(What::Everything);
        State state = State::Due;
        while (state == State::Due)
            state = reader.advance(shortest);
        QCOMPARE(state, State::Waiting);
        QVERIFY(reader.isReading());
        reader.finish();
        QVERIFY(isAsInOnePiece(reader));
    }

    void readingAgainWhileAnotherThreadWorksGivesTheNewData() {
        memory_host::openFile(structure("6zu5.cif").toStdString());
        DataReader reader;
        for (int turn = 0; turn != 3; ++turn) {
            reader.begin(What::Everything);
            while (reader.advance(shortest) == State::Due) {
            }
            memory_host::openFile(structure("1tii.pdb").toStdString());
        }
        reader.begin(What::Everything);
        readOn(reader);
        QVERIFY(isAsInOnePiece(reader));
    }

    void whatIsToBeKnownOfEverythingIsWorkedOutBeforeItIsThere() {
        for (const char* const file : {"1tii.pdb", "6zu5.cif"}) {
            memory_host::openFile(structure(file).toStdString());
            DataReader reader;
            std::size_t atoms = 0;
            const auto count = [&atoms](const view::Contents& contents, const view::Marks& marks) {
                atoms = contents.atomCount() + marks.colours.size();
            };
            reader.begin(What::Everything, count);
            readOn(reader);
            QCOMPARE(atoms, 2 * atomsOf(space()).size());
            // Looks are not everything, unless an atom has moved.
            atoms = 0;
            reader.begin(What::Looks, count);
            readOn(reader);
            QCOMPARE(atoms, std::size_t(0));
            TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(atomsOf(space()).back()),
                                   TAVIK::Vertex(1, 2, 3, true));
            reader.begin(What::Looks, count);
            readOn(reader);
            QCOMPARE(atoms, 2 * atomsOf(space()).size());
        }
    }

    void itemsThatAreDestroyedBetweenPiecesAreNotTouched() {
        for (const What what : {What::Everything, What::Looks}) {
            for (int before = 0; before != 12; ++before) {
                memory_host::openFile(structure("1tii.pdb").toStdString());
                addShapes();
                int gone = 0;
                DataReader reader([&gone] { ++gone; });
                reader.read();
                reader.begin(what);
                for (int i = 0; i != before; ++i)
                    reader.advance(shortest);
                // Everything, so that whatever is touched again was freed.
                while (space()->ChildEnd() != space()->ChildBegin())
                    TAVIK::DataMaker::Destroy(*space()->ChildBegin());
                QCOMPARE(gone, 1);
                QVERIFY(!reader.isReading());
                QCOMPARE(reader.advance(shortest), State::Done);
                QVERIFY(!reader.item(1, reader.snapshot().generation));
                reader.begin(What::Looks);
                readOn(reader);
                QCOMPARE(reader.snapshot().contents->itemCount(), std::size_t(0));
            }
        }
    }

    void itemsThatAreDestroyedWhileAnotherThreadWorksAreNotTouched() {
        memory_host::openFile(structure("6zu5.cif").toStdString());
        memory_host::openFile(structure("1tii.pdb").toStdString());
        int gone = 0;
        DataReader reader([&gone] { ++gone; });
        reader.begin(What::Everything);
        while (reader.advance(shortest) == State::Due) {
        }
        TAVIK::DataMaker::Destroy(*space()->ChildBegin());
        QCOMPARE(gone, 1);
        QVERIFY(!reader.isReading());
        reader.begin(What::Everything);
        readOn(reader);
        QVERIFY(isAsInOnePiece(reader));
        QCOMPARE(reader.snapshot().contents->entries.size(), std::size_t(1));
    }

    void eachDestructionDuringAReadingIsTold() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        int gone = 0;
        DataReader reader([&gone] { ++gone; });
        reader.read();
        const Items atoms = atomsOf(space());
        TAVIK::DataMaker::Destroy(atoms[0]);
        TAVIK::DataMaker::Destroy(atoms[1]);
        QCOMPARE(gone, 1);
        reader.begin(What::Everything);
        reader.advance(shortest);
        TAVIK::DataMaker::Destroy(atoms[2]);
        QCOMPARE(gone, 2);
    }

    void whatIsAddedBetweenPiecesDoesNoHarm() {
        for (int before = 1; before != 8; ++before) {
            memory_host::openFile(structure("1tii.pdb").toStdString());
            DataReader reader;
            reader.begin(What::Everything);
            for (int i = 0; i != before; ++i)
                reader.advance(shortest);
            // Vectors of children move when they grow.
            for (TAVIK::Compound* const atom : atomsOf(space()))
                if (atom->GetId() % 50 == 0)
                    for (int i = 0; i != 20; ++i)
                        memory_host::addAtom(TAVIK::GetParent(atom),
                                             {"X", "C", TAVIK::Vertex(0, 0, 0, true), 10.0F, 0});
            memory_host::openFile(structure("1d3z.pdb").toStdString());
            readOn(reader);
            reader.begin(What::Everything);
            readOn(reader);
            QVERIFY(isAsInOnePiece(reader));
        }
    }

    void looksThatChangeBetweenPiecesAreRightAfterTheNextReading() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        const Items atoms = atomsOf(space());
        DataReader reader;
        for (const What what : {What::Everything, What::Looks}) {
            reader.begin(what);
            for (std::size_t turn = 0; reader.advance(shortest) != State::Done; ++turn)
                changeLooks(atoms, turn);
            reader.begin(What::Looks);
            readOn(reader);
            QVERIFY(isAsInOnePiece(reader));
        }
    }

    void anAtomThatMovesBetweenPiecesIsReadAgain() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        const Items atoms = atomsOf(space());
        DataReader reader;
        reader.read();
        const std::uint64_t generation = reader.snapshot().generation;
        reader.begin(What::Looks);
        reader.advance(shortest);
        for (TAVIK::Compound* const atom : {atoms.front(), atoms.back()})
            TAVIK::SetAtomPosition(dynamic_cast<TAVIK::Atom*>(atom), TAVIK::Vertex(1, 2, 3, true));
        readOn(reader);
        QCOMPARE(reader.snapshot().generation, generation + 1);
        QVERIFY(isAsInOnePiece(reader));
    }

    void modelsThatAreSwitchedBetweenPiecesAreRightAfterTheNextReading() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        memory_host::openFile(structure("1tii.pdb").toStdString());
        DataReader reader;
        reader.read();
        for (int turn = 0; turn != 3; ++turn) {
            reader.begin(What::Looks);
            reader.advance(shortest);
            (*space()->ChildBegin())->NextModel();
            for (TAVIK::Compound* const atom : atomsOf(*space()->ChildBegin()))
                if (TAVIK::Compound* const parent = TAVIK::GetParent(atom))
                    TAVIK::GetParent(parent)->NextModel();
            readOn(reader);
            reader.begin(What::Looks);
            readOn(reader);
            QVERIFY(isAsInOnePiece(reader));
        }
    }
};

REGISTER_TEST(ReadingInPiecesTest)
#include "ReadingInPiecesTest.moc"
