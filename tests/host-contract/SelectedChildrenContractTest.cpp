// The selection of a composite's children, told at once.
#include "ContractTools.h"
#include "DataDelete.h"
#include "ManyAtoms.h"
#include "SelectedChildren.h"
#include "TestSupport.h"

#include <QRandomGenerator>

#include <optional>

using namespace contract;
using namespace TAVIK;

namespace {

std::optional<SelectedChildren> told(Compound* item) {
    SelectedChildren children;
    return GetSelectedChildren(item, children) ? std::optional(children) : std::nullopt;
}

/// The same, asked of each child.
std::uint64_t marksOf(Compound* composite) {
    std::uint64_t marks = 0;
    const Items children = childrenOf(composite);
    for (std::size_t i = 0; i != children.size(); ++i)
        if (children[i]->IsSelected())
            marks |= std::uint64_t{1} << i;
    return marks;
}

Compound* residueOf(int atoms) {
    Compound* residue = make(make(space(), "Composite"), "Residue");
    for (int i = 0; i != atoms; ++i)
        atom(residue, static_cast<float>(i));
    return residue;
}

} // namespace

class SelectedChildrenContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void ofLeavesOnly() {
        Chain chain(2);
        QVERIFY(!told(chain.atoms[0]));
        QVERIFY(!told(chain.bonds[0]));
        QVERIFY(!told(chain.molecule));
        QVERIFY(!told(chain.residues[0]));
        Compound* set = DataMaker::makeSet(chain.molecule, "set", {chain.atoms[0]});
        QVERIFY(!told(set));
        Compound* composite = make(space(), "Composite");
        DataMaker::makeSet(composite, "set", {chain.atoms[0]});
        QVERIFY(!told(composite));
    }

    // A host may tell of none; one that tells of any tells what their IsSelected() says.
    void whatIsToldIsWhatTheChildrenSay_data() {
        QTest::addColumn<int>("count");
        for (const int count : {1, 2, 63, 64, 65, 200})
            QTest::addRow("%d", count) << count;
    }
    void whatIsToldIsWhatTheChildrenSay() {
        QFETCH(int, count);
        Compound* residue = residueOf(count);
        const Items atoms = childrenOf(residue);
        if (count > int(SelectedChildren::most))
            QVERIFY(!told(residue));
        else
            requireMarks(residue);
        for (const bool on : {true, false}) {
            for (std::size_t i = 0; i < atoms.size(); i += 3) {
                atoms[i]->SetSelected(on);
                requireMarks(residue);
            }
            residue->SetSelected(on);
            requireMarks(residue);
            SelectAtoms(Items{atoms.front(), atoms.back()}, !on);
            requireMarks(residue);
            space()->SetSelected(on);
            requireMarks(residue);
            residue->ToggleSelected();
            requireMarks(residue);
        }
        Compound* set = DataMaker::makeSet(space(), "set", {atoms.front(), atoms.back()});
        for (const bool on : {true, false}) {
            set->SetSelected(on);
            requireMarks(residue);
        }
    }

    void childrenThatComeAndGoChangeTheVersion() {
        Compound* residue = residueOf(5);
        if (!told(residue))
            return;
        childrenOf(residue)[3]->SetSelected(true);
        auto before = told(residue);
        const auto isOther = [&] {
            const auto now = told(residue);
            return now->version != std::exchange(before, now)->version;
        };
        residue->SetSelected(false);
        residue->SetVisible(false);
        childrenOf(residue)[4]->SetSelected(true);
        QVERIFY(!isOther());
        DataMaker::Destroy(childrenOf(residue)[1]);
        QVERIFY(isOther());
        requireMarks(residue);
        atom(residue);
        QVERIFY(isOther());
        requireMarks(residue);
        DataMaker::Destroy(childrenOf(residue).back());
        atom(residue);
        QVERIFY(isOther());
        requireMarks(residue);
    }

    // Marks keep to their children whichever go, and beyond the number that can be told of.
    void inAnyOrder() {
        QRandomGenerator random(1);
        Compound* residue = residueOf(30);
        int known = 0;
        for (int step = 0; step != 3000; ++step) {
            const Items atoms = childrenOf(residue);
            const auto any = [&] { return atoms[random.bounded(quint32(atoms.size()))]; };
            const bool grows = step / 500 % 2 == 0;
            if (atoms.size() > 1 && random.bounded(10) < (grows ? 2 : 4))
                DataMaker::Destroy(any());
            else if (random.bounded(10) < (grows ? 4 : 2))
                atom(residue);
            else
                any()->SetSelected(random.bounded(2) == 0);
            if (step % 3 == 0)
                known += told(residue) ? 1 : 0;
            requireMarks(residue);
        }
        QVERIFY(known == 0 || known > 100);
    }

private:
    static void requireMarks(Compound* composite) {
        if (const auto children = told(composite)) {
            QVERIFY(childrenOf(composite).size() <= SelectedChildren::most);
            QCOMPARE(children->marks, marksOf(composite));
        }
    }
};

REGISTER_TEST(SelectedChildrenContractTest)
#include "SelectedChildrenContractTest.moc"
