// What the find box reads of the data: compared with what each item answers, in one piece and in
// many, whatever happens between two of them.
#include "FindReader.h"

#include "Ancestry.h"
#include "AtomDetails.h"
#include "ChangeData.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Kinds.h"
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "files/Files.h"
#include "items/Building.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

using namespace workbench;
using TAVIK::Compound;
using Atoms = std::vector<Compound*>;

namespace {

constexpr std::chrono::microseconds shortest(0);
const FindParts all(0b11111);
const FindParts positions(1U << FindValues::Positions);

TAVIK::Space* space() {
    return TAVIK::Space::instance();
}

Atoms atomsOf(Compound* item) {
    Atoms atoms;
    TAVIK::GetAtoms(item, atoms, true);
    return atoms;
}

bool isPoint(const NearSearch::Point& point, const TAVIK::Vertex& at) {
    return at.isValid() ? point == NearSearch::Point{at[0], at[1], at[2]} : std::isnan(point[0]);
}

/// The residue that an atom is in, or null.
Compound* residueAround(Compound* atom) {
    Compound* item = TAVIK::GetParent(atom);
    while (item && !dynamic_cast<TAVIK::Residue*>(item))
        item = TAVIK::GetParent(item);
    return item;
}

bool isTheAtom(const FindIndex& index, const FindValues& values, std::uint32_t i) {
    Compound* const atom = index.atoms[i];
    const FindIndex::Residue& residue = index.residues[index.residueOf(i)];
    std::string name = index.places[residue.place];
    if (residue.item)
        name.append(1, '/').append(index.label(residue));
    name.append(1, '/').append(atom->GetName());
    return i >= residue.begin && i < residue.end && residue.item == residueAround(atom) &&
           name == atom->GetFQName() && index.atomNames[i] == index.names.find(atom->GetName()) &&
           isPoint(values.positions->at(i), atom->GetPosition()) &&
           values.alternates->at(i) == alternateOf(atom) &&
           values.elements->at(i) == index.names.find(atom->GetType()) &&
           values.selected->has(i) == atom->IsSelected() &&
           values.hidden->has(i) == !atom->IsVisible();
}

/// Whether the reader has what the items say now, of all parts.
bool isRight(const FindReader& reader) {
    const FindIndex& index = *reader.index();
    bool isRight = reader.has(all) && index.atoms == atomsOf(space());
    for (std::uint32_t i = 0; isRight && i != index.atoms.size(); ++i)
        isRight = isTheAtom(index, reader.values(), i);
    return isRight;
}

/// Whether what was prepared of the positions finds the neighbours of some atoms.
bool findsNeighbours(const FindReader& reader) {
    const FindValues::Points& points = *reader.values().positions;
    Bits from(points.size());
    for (std::size_t i = 0; i < points.size(); i += 1 + points.size() / 5)
        from.add(i);
    return reader.values().near.get()->near(from, 6.0) == NearSearch(points).near(from, 6.0);
}

/// Reads the rest in the smallest pieces; returns how many these were.
int readOn(FindReader& reader, FindParts parts) {
    int pieces = 1;
    while (!reader.advance(parts, shortest))
        ++pieces;
    return pieces;
}

void change(const std::function<void()>& what) {
    changeData(DataPointBase(nullptr, Publisher::Update), [&](DataPointBase&) { what(); });
}

void move(Compound* atom, float x) {
    TAVIK::SetAtomPosition(static_cast<TAVIK::Atom*>(atom), TAVIK::Vertex(x, 2.0F, 3.0F, true));
}

/// Colours apart, all that changes without anything being made; differently in each turn.
void changeState(const Atoms& atoms, std::size_t turn) {
    change([&] {
        for (std::size_t i = turn; i < atoms.size(); i += 7) {
            atoms[i]->SetVisible(i % 3 != turn % 3);
            atoms[i]->SetSelected(i % 2 == turn % 2);
        }
        move(atoms[turn % atoms.size()], static_cast<float>(turn));
    });
}

void destroyAll() {
    const DataAdder<TAVIK::Space> guard(nullptr, space());
    while (space()->ChildEnd() != space()->ChildBegin())
        TAVIK::DataMaker::Destroy(*space()->ChildBegin());
}

void openSample() {
    memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
}

} // namespace

class FindReaderTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void everythingIsAsTheItemsSay() {
        for (const char* const file : {"1ejg.pdb", "1d3z.pdb", "1cbs.cif.gz"})
            memory_host::openFile(structure(file).toStdString());
        // Atoms outside of residues, before and after what holds none.
        Compound* const entry = TAVIK::DataMaker::makeCore(space(), "loose", "Composite");
        for (int i = 0; i != 3; ++i) {
            memory_host::addAtom(entry, {"a longer name", "C", TAVIK::Vertex(0, 0, 0, true), 1.0F});
            TAVIK::DataMaker::makeCore(entry, "EMPTY 1", "Residue");
        }
        memory_host::addAtom(TAVIK::DataMaker::makeCore(entry, "G", "Group"),
                             {"X", "X", TAVIK::Vertex(), 1.0F});
        changeState(atomsOf(space()), 1);
        FindReader reader;
        QVERIFY(readOn(reader, all) > 20);
        QVERIFY(isRight(reader));
        QCOMPARE(reader.index()->residues.back().end - reader.index()->residues.back().begin, 4U);
        FindReader other;
        other.finish(all);
        QVERIFY(isRight(other));
        QCOMPARE(other.index()->labels, reader.index()->labels);
        QCOMPARE(other.index()->chains, reader.index()->chains);
    }

    void nothingIsThereBeforeAllOfItIs() {
        openSample();
        FindReader reader;
        QVERIFY(reader.isEmpty());
        while (!reader.advance(positions, shortest))
            QVERIFY(!reader.has(positions) && !reader.isEmpty());
        QVERIFY(reader.has(positions) && !reader.has(all));
        QVERIFY(reader.values().positions && !reader.values().selected);
        QVERIFY(reader.advance(positions, shortest));
    }

    void itemsThatAreDestroyedBetweenPiecesAreNotTouched() {
        for (int before = 0; before != 16; ++before) {
            openSample();
            openSample();
            FindReader reader;
            for (int i = 0; i != before; ++i)
                reader.advance(all, shortest);
            reader.forgetItems();
            QVERIFY(reader.isEmpty());
            // Everything, so that whatever is touched again was freed.
            destroyAll();
            readOn(reader, all);
            QVERIFY(reader.index()->atoms.empty());
            QVERIFY(isRight(reader));
        }
    }

    void whatIsAddedBetweenPiecesDoesNoHarm() {
        for (int before = 1; before != 16; ++before) {
            openSample();
            FindReader reader;
            for (int i = 0; i != before; ++i)
                reader.advance(all, shortest);
            {
                const DataAdder<TAVIK::Space> guard(nullptr, space());
                for (Compound* const atom : atomsOf(space()))
                    if (atom->GetId() % 50 == 0)
                        for (int i = 0; i != 20; ++i)
                            memory_host::addAtom(TAVIK::GetParent(atom),
                                                 {"X", "C", TAVIK::Vertex(0, 0, 0, true), 10.0F});
            }
            // Before it is told, what was begun is read to its end.
            readOn(reader, all);
            reader.forgetItems();
            readOn(reader, all);
            QVERIFY(isRight(reader));
            destroyAll();
        }
    }

    void changesBetweenPiecesAreReadAgain() {
        openSample();
        const Atoms atoms = atomsOf(space());
        FindReader reader;
        std::size_t turns = 0;
        for (; turns != 60; ++turns) {
            reader.advance(all, shortest);
            changeState(atoms, turns);
            reader.forgetState();
            QVERIFY(!reader.has(positions));
        }
        readOn(reader, all);
        QVERIFY(isRight(reader));
        QVERIFY(findsNeighbours(reader));
        const auto index = reader.index();
        changeState(atoms, turns);
        reader.forgetState();
        readOn(reader, all);
        QCOMPARE(reader.index(), index);
        QVERIFY(isRight(reader));
        QVERIFY(findsNeighbours(reader));
    }

    // What was prepared of them is kept.
    void positionsThatDidNotChangeStayTheSame() {
        openSample();
        FindReader reader;
        reader.finish(positions);
        const auto before = reader.values().positions;
        const auto near = reader.values().near.get();
        change([&] { (*space()->ChildBegin())->SetSelected(true); });
        for (const bool isState : {true, false}) {
            isState ? reader.forgetState() : reader.forgetItems();
            QVERIFY(!reader.has(positions));
            reader.finish(positions);
            QVERIFY(reader.has(positions));
            QCOMPARE(reader.values().positions, before);
            QCOMPARE(reader.values().near.get(), near);
        }
        reader.forgetOldPositions();
        QVERIFY(reader.has(positions));
        reader.forgetItems();
        reader.forgetOldPositions();
        QVERIFY(!reader.values().positions && !reader.values().near.valid());
        reader.finish(all);
        QVERIFY(isRight(reader));
    }

    void oldPositionsMayGoWhileTheyAreReadAgain() {
        openSample();
        FindReader reader;
        for (const bool isState : {true, false}) {
            reader.finish(positions);
            isState ? reader.forgetState() : reader.forgetItems();
            QVERIFY(!reader.advance(positions, shortest));
            reader.forgetOldPositions();
            QVERIFY(!reader.values().positions);
            readOn(reader, all);
            QVERIFY(isRight(reader));
            QVERIFY(findsNeighbours(reader));
        }
    }

    // One, some, and all of them; and more or fewer than before.
    void positionsThatChangedArePreparedAgain() {
        openSample();
        const Atoms atoms = atomsOf(space());
        FindReader reader;
        reader.finish(all);
        QVERIFY(findsNeighbours(reader));
        for (const std::size_t every : {atoms.size(), std::size_t(100), std::size_t(1)}) {
            for (const bool isPrepared : {true, false}) {
                change([&] {
                    for (std::size_t i = 0; i < atoms.size(); i += every)
                        move(atoms[i], static_cast<float>(i + every) * (isPrepared ? 1.0F : 0.5F));
                });
                reader.forgetState();
                readOn(reader, all);
                QVERIFY(isRight(reader));
                if (isPrepared)
                    QVERIFY(findsNeighbours(reader));
            }
        }
        for (Compound* const atom : {atoms[0], atoms[500]}) {
            reader.forgetItems();
            TAVIK::DataMaker::Destroy(atom);
            readOn(reader, all);
            QVERIFY(isRight(reader));
            QVERIFY(findsNeighbours(reader));
        }
        reader.forgetItems();
        openSample();
        readOn(reader, all);
        QVERIFY(isRight(reader));
        QVERIFY(findsNeighbours(reader));
    }
};

REGISTER_TEST(FindReaderTest)
#include "FindReaderTest.moc"
