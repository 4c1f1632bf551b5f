// The parts of the data that the find box reads by atom, compared with what each atom answers.
#include "AtomDetails.h"
#include "ChangeData.h"
#include "DataPointBase.h"
#include "FindIndex.h"
#include "Space.h"
#include "TestSupport.h"
#include "files/Files.h"

#include <functional>

using namespace workbench;

class FindValuesTest : public test_support::TestCase {
    Q_OBJECT

    static void select(const FindIndex& index, const std::function<bool(std::size_t)>& isWanted) {
        changeData(DataPointBase(nullptr, Publisher::Update), [&](DataPointBase&) {
            for (std::size_t i = 0; i != index.atoms.size(); ++i)
                index.atoms[i]->SetSelected(isWanted(i));
        });
    }
    static void compare(const FindIndex& index, const FindValues& values) {
        QCOMPARE(values.positions->size(), index.atoms.size());
        for (std::size_t i = 0; i != index.atoms.size(); ++i) {
            const TAVIK::Vertex at = index.atoms[i]->GetPosition();
            QVERIFY(at.isValid());
            QVERIFY((values.positions->at(i) == NearSearch::Point{at[0], at[1], at[2]}));
        }
    }

private slots:
    void positionsAreThoseOfTheAtomsWhateverIsSelected() {
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        const auto index = FindIndex::read();
        const std::function<bool(std::size_t)> ways[] = {
            [](std::size_t) { return false; },
            [](std::size_t) { return true; },
            [](std::size_t i) { return i % 3 == 1; },
            [](std::size_t i) { return i == 0; },
            [&](std::size_t i) { return i + 1 == index->atoms.size(); },
            [](std::size_t i) { return i > 2000 && i < 4000; },
        };
        for (const auto& way : ways) {
            select(*index, way);
            FindValues values;
            values.readPositions();
            compare(*index, values);
        }
    }

    // What was prepared of them is kept.
    void positionsThatDidNotChangeStayTheSame() {
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        const auto index = FindIndex::read();
        FindValues values;
        values.readPositions();
        const auto before = values.positions;
        values.forgetState();
        QVERIFY(!values.has(FindValues::Part::Positions));
        select(*index, [](std::size_t i) { return i % 2 == 0; });
        values.readPositions();
        QVERIFY(values.has(FindValues::Part::Positions));
        QCOMPARE(values.positions, before);
        values.forgetItems();
        QVERIFY(!values.has(FindValues::Part::Positions));
        values.readPositions();
        QCOMPARE(values.positions, before);
        values.forgetOldPositions();
        QVERIFY(values.has(FindValues::Part::Positions));
        values.forgetItems();
        values.forgetOldPositions();
        QVERIFY(!values.positions && !values.near.valid());
        values.readPositions();
        compare(*index, values);
    }

    void positionsThatChangedArePreparedAgain() {
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        const auto index = FindIndex::read();
        FindValues values;
        values.readPositions();
        const std::size_t last = index->atoms.size() - 1;
        Bits first(index->atoms.size());
        first.add(0);
        QVERIFY(!values.near.get()->near(first, 1e-3).has(last));
        changeData(DataPointBase(nullptr, Publisher::Update), [&](DataPointBase&) {
            TAVIK::SetAtomPosition(static_cast<TAVIK::Atom*>(index->atoms[last]),
                                   index->atoms.front()->GetPosition());
        });
        values.forgetItems();
        values.readPositions();
        compare(*index, values);
        QVERIFY(values.near.get()->near(first, 1e-3).has(last));
    }

    void theIndexDoesNotDependOnTheNumberThatIsExpected() {
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        const auto index = FindIndex::read();
        for (const std::size_t expected : {1U, 100'000U}) {
            const auto other = FindIndex::read(expected);
            QVERIFY(other->atoms == index->atoms && other->atomNames == index->atomNames);
        }
    }
};

REGISTER_TEST(FindValuesTest)
#include "FindValuesTest.moc"
