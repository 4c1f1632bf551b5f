// Selected residues are found again wherever they stand by now, and only those.
#include "data/SelectedResidues.h"

#include "CommandTools.h"
#include "DataMaker.h"
#include "Space.h"
#include "TestSupport.h"
#include "WindowTools.h"
#include "items/Building.h"

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::DataMaker;
using TAVIK::Space;

class SelectedResiduesTest : public test_support::TestCase {
    Q_OBJECT

    /// A detached entry with the residues "R 1" to "R 3", all selected.
    static Compound* makeEntry(const std::string& name) {
        Compound* entry = memory_host::makeDetached(name, "Composite");
        Compound* groups = DataMaker::makeCore(entry, "Groups", "Composite");
        for (const char* residue : {"R 1", "R 2", "R 3"})
            memory_host::addAtom(DataMaker::makeCore(groups, residue, "Residue"),
                                 {"C", "C", {}, 0.0F, 0});
        entry->SetSelected(true);
        return entry;
    }
    static QStringList found(SelectedResidues& residues) {
        QStringList names;
        for (std::size_t i = 0; i != residues.size(); ++i) {
            const Compound* residue = residues.find(i);
            names << (residue ? QString::fromLatin1(residue->GetName()) : QStringLiteral("-"));
        }
        return names;
    }

private slots:
    // The data space's entries need not stand in the order of their identifiers.
    void anEntryOlderThanItsNeighboursIsFoundWhenItMovesUp() {
        Compound* root = makeEntry("old");
        Compound* first = addStructure("1abc");
        addStructure("2abc");
        addStructure("3abc");
        memory_host::attach(root, Space::instance());
        SelectedResidues residues(root);
        DataMaker::Destroy(first);
        QCOMPARE(found(residues), (QStringList{"R 1", "R 2", "R 3"}));
    }

    void anEntryYoungerThanItsNeighboursIsFoundWhenItMovesUp() {
        Compound* late = memory_host::makeDetached("late", "Composite");
        Compound* first = addStructure("1abc");
        Compound* root = makeEntry("young");
        memory_host::attach(root, Space::instance());
        memory_host::attach(late, Space::instance());
        SelectedResidues residues(root);
        DataMaker::Destroy(first);
        QCOMPARE(found(residues), (QStringList{"R 1", "R 2", "R 3"}));
    }

    void residuesThatAreGoneAreNotFoundAndTheOthersAre_data() {
        QTest::addColumn<QList<int>>("gone");
        for (int mask = 0; mask != 8; ++mask) {
            QList<int> gone;
            for (int i = 0; i != 3; ++i)
                if (mask >> i & 1)
                    gone << i;
            QTest::addRow("%d", mask) << gone;
        }
    }
    void residuesThatAreGoneAreNotFoundAndTheOthersAre() {
        QFETCH(QList<int>, gone);
        Compound* root = makeEntry("1abc");
        memory_host::attach(root, Space::instance());
        SelectedResidues residues(root);
        QStringList expected{"R 1", "R 2", "R 3"};
        for (auto it = gone.crbegin(); it != gone.crend(); ++it) {
            DataMaker::Destroy(itemAt(root, {"Groups"})->ChildBegin()[*it]);
            expected[*it] = "-";
        }
        QCOMPARE(found(residues), expected);
        DataMaker::Destroy(itemAt(root, {"Groups"}));
        QCOMPARE(found(residues), QStringList(3, "-"));
        DataMaker::Destroy(root);
        QCOMPARE(found(residues), QStringList(3, "-"));
    }

    void onlySelectedResiduesAreRemembered() {
        Compound* root = makeEntry("1abc");
        memory_host::attach(root, Space::instance());
        itemAt(root, {"Groups", "R 2"})->SetSelected(false);
        SelectedResidues residues(root);
        QCOMPARE(found(residues), (QStringList{"R 1", "R 3"}));
    }
};

REGISTER_TEST(SelectedResiduesTest)
#include "SelectedResiduesTest.moc"
