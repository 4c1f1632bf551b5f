// In what order items are destroyed, and that no row stands for any of them by then.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "DestroyWatch.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "tree/TreeView.h"

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class DestroyOrderTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_shown = nullptr;

    static QString nameOf(const Compound* item) { return QString::fromLatin1(item->GetFQName()); }
    template <class T> static QStringList selectedOf(Compound* root) {
        std::vector<Compound*> items;
        TAVIK::GetItems<T>(root, items, false, nullptr, true);
        QStringList names;
        for (const Compound* item : items)
            names << nameOf(item);
        return names;
    }
    /// The names of what goes in `act`; the tree is empty each time.
    QStringList goneIn(const std::function<void()>& act) const {
        QStringList names;
        const DestroyWatch watch([&](Compound* item) {
            QVERIFY(!treeOf(*m_window)->firstChild());
            names << nameOf(item);
        });
        act();
        return names;
    }

private slots:
    // The atoms C1 of three residues, two bonds, two residues ... are selected.
    void init() override {
        TestCase::init();
        std::vector<ResidueSpec> residues;
        for (const char* name : {"R 1", "R 2", "R 3", "R 4"})
            residues.push_back({name, {{"C1", "C", {}}, {"C2", "C", {}}, {"C3", "C", {}}}});
        m_shown = addChain("1abc", residues);
        showWindow();
    }

    void selectedItemsGoInTheOrderCollected_data() {
        QTest::addColumn<QString>("label");
        for (const char* label : {"Atom", "Bond", "Group", "Residue"})
            QTest::newRow(label) << QString::fromLatin1(label);
    }
    void selectedItemsGoInTheOrderCollected() {
        QFETCH(QString, label);
        QStringList expected;
        // Selected in another order than they stand in.
        for (const int residue : {3, 1, 2}) {
            Compound* group =
                itemAt(m_shown, {"A", "Groups", QStringLiteral("R %1").arg(residue), "Group"});
            if (label == "Atom") {
                group->ChildBegin()[2]->SetSelected(true);
                group->ChildBegin()[0]->SetSelected(true);
            } else if (label == "Bond") {
                itemAt(m_shown, {"A", "Bonds"})->ChildBegin()[residue]->SetSelected(true);
            } else {
                group->SetSelected(true);
            }
        }
        expected = label == "Atom"    ? selectedOf<TAVIK::Atom>(m_shown)
                   : label == "Bond"  ? selectedOf<TAVIK::Bond>(m_shown)
                   : label == "Group" ? selectedOf<TAVIK::Group>(m_shown)
                                      : selectedOf<TAVIK::Residue>(m_shown);
        QCOMPARE(expected.size(), label == "Atom" ? 6 : 3);
        QVERIFY(std::is_sorted(expected.begin(), expected.end()));
        QCOMPARE(goneIn([&] { trigger(*m_window, QStringLiteral("Delete"), label); }), expected);
    }

    // However deep in an item that goes another one lies which the set lists, too: it goes once.
    void whatASetListsBesideItsHolderGoesWithIt() {
        const auto make = [](Compound* parent, const char* name, const char* kind) {
            return TAVIK::DataMaker::makeCore(parent, name, kind);
        };
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            Compound* outer = make(Space::instance(), "outer", "Molecule");
            Compound* inner = make(make(outer, "middle", "Molecule"), "inner", "Molecule");
            make(make(inner, "innermost", "Molecule"), "C", "Atom");
            Compound* beside = make(Space::instance(), "beside", "Molecule");
            TAVIK::DataMaker::makeSet(Space::instance(), "set",
                                      {*inner->ChildBegin(), outer, inner, beside, outer});
            Space::instance()->SetSelected(true);
        }
        clickEntry(*m_window, 3);
        QCOMPARE(rows(*m_window).front(), "set");
        QCOMPARE(goneIn([&] { trigger(*m_window, "Delete", "Chain"); }),
                 (QStringList{"/outer", "/beside"}));
        QCOMPARE(entries(*m_window).size(), 2);
    }

    void allEntriesGoFromTheFirstOn() {
        // One that was made before the others comes last, as a file that takes long to read.
        Compound* late = memory_host::makeDetached("late", "Composite");
        addStructure("3abc");
        addStructure("2abc");
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            memory_host::attach(late, Space::instance());
        }
        QCOMPARE(goneIn([&] { trigger(*m_window, "Delete", "All"); }),
                 (QStringList{"/1abc", "/3abc", "/2abc", "/late"}));
    }

    void theTreeIsEmptyBeforeABranchOrAnEntryGoes() {
        QCOMPARE(goneIn([&] {
                     withQuestion(
                         [&] {
                             clickRow(*m_window, {"1abc", "A", "Groups"}, Qt::MiddleButton);
                         },
                         pressOk);
                 }),
                 QStringList("/1abc/A/Groups"));
        QCOMPARE(rows(*m_window), (QStringList{"1abc", " A", "  Bonds"}));
        addStructure("2abc");
        QCOMPARE(goneIn([&] {
                     withQuestion([&] { clickEntry(*m_window, 1, Qt::MiddleButton); }, pressOk);
                 }),
                 QStringList("/2abc"));
        clickEntry(*m_window, 0);
        m_shown->SetSelected(true);
        QCOMPARE(goneIn([&] { trigger(*m_window, "Delete", "Tree"); }), QStringList("/1abc"));
    }
};

REGISTER_TEST(DestroyOrderTest)
#include "DestroyOrderTest.moc"
