// Reading the qualified names of atoms in parts, at once and in pieces.
#include "AtomNameWalk.h"
#include "ContractTools.h"
#include "TestSupport.h"
#include "Traversal.h"

#include <algorithm>
#include <set>

using namespace contract;
using namespace TAVIK;

namespace {

/// Puts the parts of names together again.
class Reader : public AtomNameVisitor {
public:
    Reader() = default;
    Reader(Compound* root, bool all) { VisitAtomNames(root, all, *this); }
    explicit Reader(Compound* root, std::set<Compound*> leftOut = {})
        : m_leftOut(std::move(leftOut)) {
        VisitAtomNames(root, true, *this);
    }

    bool Enter(Compound* composite, std::string_view part) override {
        m_parts.emplace_back(part);
        if (m_leftOut.contains(composite))
            return false;
        m_entered.push_back(composite);
        m_open.push_back(m_prefix.size());
        m_prefix += part;
        return true;
    }
    void Leave() override {
        m_prefix.resize(m_open.back());
        m_open.pop_back();
    }
    void Visit(Compound* atom, std::string_view name) override {
        m_atoms.push_back(atom);
        m_names.push_back(m_prefix + std::string(name));
    }

    std::set<Compound*> m_leftOut;
    std::string m_prefix;
    std::vector<std::size_t> m_open;
    std::vector<std::string> m_parts;
    Items m_entered;
    Items m_atoms;
    std::vector<std::string> m_names;
};

Items atomsOf(Compound* root, bool all) {
    Items items;
    GetAtoms(root, items, all);
    return items;
}

std::vector<std::string> namesOf(const Items& items) {
    std::vector<std::string> names;
    for (const Compound* item : items)
        names.push_back(item->GetFQName());
    return names;
}

/// A root, and all composites and atoms below it.
void gather(Compound* root, Items& items) {
    items.push_back(root);
    for (Compound* child : childrenOf(root))
        gather(child, items);
}

} // namespace

class AtomNamesContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void thePartsMakeUpTheQualifiedNames() {
        const Chain chain(3);
        Compound* const odd = make(make(chain.residues[1], "Group", "Outer"), "Composite", "Inner");
        atom(make(odd, "Composite", "Last"), 1.0F, "");
        atom(make(make(space(), "Composite", ""), "Molecule", "A B"));
        DataMaker::makeSet(space(), "set", chain.atoms);
        chain.groups[2]->SetSelected(true);
        chain.atoms[9]->SetSelected(true);
        Items roots;
        gather(space(), roots);
        for (Compound* root : roots) {
            for (const bool all : {true, false}) {
                const Reader reader(root, all);
                const Items atoms = atomsOf(root, all);
                QCOMPARE(reader.m_atoms, atoms);
                QCOMPARE(reader.m_names, namesOf(atoms));
                QVERIFY(reader.m_open.empty());
            }
        }
    }

    void piecesOfAnySizeGiveTheSame() {
        const Chain chain(3);
        atom(make(make(space(), "Composite", ""), "Molecule", "A B"));
        make(chain.molecule, "Residue", "EMPTY 4");
        chain.groups[2]->SetSelected(true);
        chain.atoms[9]->SetSelected(true);
        Items roots;
        gather(space(), roots);
        for (Compound* root : roots) {
            for (const bool all : {true, false}) {
                const Reader whole(root, all);
                for (const std::size_t size : {1U, 2U, 3U, 7U, 1000U}) {
                    Reader reader;
                    AtomNameWalk walk(root, all, reader);
                    while (walk.advance(size))
                        QVERIFY(reader.m_atoms.size() <= whole.m_atoms.size());
                    QVERIFY(!walk.advance(size));
                    QCOMPARE(reader.m_parts, whole.m_parts);
                    QCOMPARE(reader.m_atoms, whole.m_atoms);
                    QCOMPARE(reader.m_names, whole.m_names);
                    QVERIFY(reader.m_open.empty());
                }
            }
        }
        Reader nothing;
        QVERIFY(!AtomNameWalk(nullptr, true, nothing).advance(1));
        QVERIFY(nothing.m_parts.empty());
    }

    void aPieceIsAboutAsLargeAsAskedFor() {
        const Chain chain(20);
        Reader reader;
        AtomNameWalk walk(space(), true, reader);
        for (std::size_t before = 0; walk.advance(4); before = reader.m_atoms.size())
            QVERIFY(reader.m_atoms.size() <= before + 4);
        QCOMPARE(reader.m_atoms, atomsOf(space(), true));
    }

    // Vectors of children move when they grow.
    void itemsThatAreMadeBetweenPiecesDoNoHarm() {
        for (int before = 1; before != 12; ++before) {
            const Chain chain(3);
            Reader reader;
            AtomNameWalk walk(space(), true, reader);
            for (int i = 0; i != before; ++i)
                walk.advance(2);
            Items roots;
            gather(space(), roots);
            for (Compound* root : roots)
                for (int i = 0; i != 20 && dynamic_cast<Composite*>(root); ++i)
                    atom(make(root, "Composite", "more"));
            while (walk.advance(2)) {
            }
            QVERIFY(reader.m_open.empty());
            for (Compound* const old : chain.atoms)
                QCOMPARE(std::count(reader.m_atoms.begin(), reader.m_atoms.end(), old), 1);
            QCOMPARE(reader.m_names, namesOf(reader.m_atoms));
            while (space()->ChildEnd() != space()->ChildBegin())
                DataMaker::Destroy(*space()->ChildBegin());
        }
    }

    void theFirstPartIsAllThatNamesBelowTheRootBeginWith() {
        Compound* const molecule = make(make(space(), "Composite", "1ubq"), "Molecule", "A");
        Compound* const residue = make(make(molecule, "Composite", "Groups"), "Residue", "MET 1");
        Compound* const backbone = make(residue, "Group", "Backbone");
        atom(backbone);
        using Parts = std::vector<std::string>;
        QCOMPARE(Reader(space()).m_parts, (Parts{"/", "1ubq/", "A/", "Groups/", "MET 1/"}));
        QCOMPARE(Reader(molecule).m_parts, (Parts{"/1ubq/A/", "Groups/", "MET 1/"}));
        QCOMPARE(Reader(residue).m_parts, (Parts{"/1ubq/A/Groups/MET 1/"}));
        QCOMPARE(Reader(backbone).m_parts, (Parts{"/1ubq/A/Groups/MET 1/"}));
    }

    void compositesThatAreInNoNameAreNotEntered() {
        const Chain chain(2);
        QCOMPARE(Reader(chain.molecule).m_entered,
                 (Items{chain.molecule, chain.residues[0], chain.residues[1]}));
    }

    void compositesWithoutWantedAtomsAreNotEntered() {
        const Chain chain(2);
        make(chain.molecule, "Residue", "EMPTY 3");
        chain.atoms[5]->SetSelected(true);
        QCOMPARE(Reader(chain.molecule, true).m_entered,
                 (Items{chain.molecule, chain.residues[0], chain.residues[1]}));
        QCOMPARE(Reader(chain.molecule, false).m_entered,
                 (Items{chain.molecule, chain.residues[1]}));
    }

    void whatIsLeftOutIsNotVisited() {
        const Chain chain(3);
        const Reader reader(space(), std::set{chain.residues[1]});
        Items rest = atomsOf(chain.residues[0], true);
        GetAtoms(chain.residues[2], rest, true);
        QCOMPARE(reader.m_atoms, rest);
        QCOMPARE(reader.m_names, namesOf(rest));
        QVERIFY(reader.m_open.empty());
        QVERIFY(Reader(space(), std::set{space()}).m_atoms.empty());
    }

    void anAtomIsVisitedWithItsWholeName() {
        const Chain chain(1);
        const Reader reader(chain.atoms[0]);
        QVERIFY(reader.m_entered.empty());
        QCOMPARE(reader.m_names, namesOf({chain.atoms[0]}));
        QVERIFY(Reader(chain.atoms[0], false).m_atoms.empty());
    }

    void whereNoAtomIsNothingIsVisited() {
        const Chain chain(1);
        Compound* const set = DataMaker::makeSet(space(), "set", chain.atoms);
        for (Compound* root : {static_cast<Compound*>(nullptr), set, chain.bonds[0]}) {
            const Reader reader(root);
            QVERIFY(reader.m_parts.empty());
            QVERIFY(reader.m_atoms.empty());
        }
    }
};

REGISTER_TEST(AtomNamesContractTest)
#include "AtomNamesContractTest.moc"
