// Union, intersection and difference of the selection with named atoms, all at once, against the
// predicates applied to one atom after the other.
#include "DataAdder.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "PatternGenerator.h"
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "WindowTools.h"
#include "data/NamePredicates.h"
#include "files/Files.h"
#include "items/Building.h"

#include <random>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

constexpr SetOperation operations[] = {SetOperation::Union, SetOperation::Intersection,
                                       SetOperation::Difference};

std::vector<Compound*> atomsBelow(Compound* root) {
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(root, atoms, true);
    return atoms;
}

void select(const std::vector<Compound*>& atoms, const std::vector<bool>& selected) {
    for (std::size_t i = 0; i < atoms.size(); ++i)
        atoms[i]->SetSelected(selected[i]);
}

std::vector<bool> selection(const std::vector<Compound*>& atoms) {
    std::vector<bool> selected;
    for (const Compound* atom : atoms)
        selected.push_back(atom->IsSelected());
    return selected;
}

void applyPlainly(Compound* root, SetOperation operation, const QString& expression) {
    const QRegExp re(expression);
    switch (operation) {
    case SetOperation::Union:
        TAVIK::ForAtoms(root, true, [&](Compound* atom) { SelectIf(atom, re); });
        break;
    case SetOperation::Intersection:
        TAVIK::ForAtoms(root, false, [&](Compound* atom) { UnSelectIfNot(atom, re); });
        break;
    case SetOperation::Difference:
        TAVIK::ForAtoms(root, true, [&](Compound* atom) { UnSelectIf(atom, re); });
        break;
    }
}

Compound* make(Compound* parent, const std::string& name, const std::string& kind) {
    return TAVIK::DataMaker::makeCore(parent, name, kind);
}

void makeAtoms(Compound* parent, const std::vector<const char*>& names) {
    for (const char* name : names)
        memory_host::addAtom(parent, {name, "C", TAVIK::Vertex(1, 2, 3, true), 20, 0});
}

} // namespace

class SetAlgebraTest : public test_support::TestCase {
    Q_OBJECT

    /// An entry in which atoms stand wherever they can, beside items that are none.
    static Compound* addOddStructure(const std::string& name) {
        const DataAdder<Space> guard(nullptr, Space::instance());
        Compound* entry = make(Space::instance(), name, "Composite");
        makeAtoms(entry, {"C", "CA"});
        Compound* chain = make(entry, "A", "Molecule");
        Compound* bonds = make(chain, "Bonds", "Composite");
        make(chain, "Empty", "Composite");
        Compound* groups = make(chain, "Groups", "Composite");
        Compound* residue = make(groups, "MET 1", "Residue");
        makeAtoms(residue, {"N"});
        Compound* backbone = make(residue, "Backbone", "Group");
        makeAtoms(backbone, {"CA", "C", "C"});
        makeAtoms(make(backbone, "Inner", "Composite"), {"O", "OXT"});
        makeAtoms(residue, {"CB"});
        makeAtoms(make(residue, "Tail", "Composite"), {"SD", "CE"});
        makeAtoms(residue, {"HB1", "", "\xe9"});
        make(residue, "Hollow", "Group");
        makeAtoms(make(groups, "GLY 10", "Residue"), {"N", "CA", "C"});
        makeAtoms(make(make(groups, "A", "Residue"), "Backbone", "Group"), {"CA"});
        const std::vector<Compound*> atoms = atomsBelow(entry);
        memory_host::addBond(bonds, atoms[0], atoms[1]);
        TAVIK::DataMaker::makeSet(entry, "Some", {atoms[3], atoms[2], atoms[8], groups});
        makeAtoms(entry, {"CA"});
        return entry;
    }

    /// Requires that an operation does the same both ways, from the same selection.
    static void compare(Compound* root, const QString& expression, std::mt19937& random) {
        const std::vector<Compound*> atoms = atomsBelow(Space::instance());
        std::vector<bool> before(atoms.size());
        const unsigned density = random() % 4;
        for (std::size_t i = 0; i < before.size(); ++i)
            before[i] = random() % 3 < density;
        const DataPoint<Space> guard(nullptr, Space::instance());
        for (const SetOperation operation : operations) {
            select(atoms, before);
            applyPlainly(root, operation, expression);
            const std::vector<bool> expected = selection(atoms);
            select(atoms, before);
            QCOMPARE(applySetOperation(root, operation, expression), QString());
            QVERIFY2(selection(atoms) == expected, qPrintable(expression));
        }
    }

private slots:
    void atomsAnywhereAreFoundByTheirNames() {
        std::mt19937 random(1);
        Compound* entry = addOddStructure("1odd");
        addStructure("1abc");
        const QStringList patterns = {".*",
                                      "/.*/Groups/.*/.*$",
                                      "/A/Groups/MET 1/C$",
                                      "/A/Groups/MET 1/C.?$",
                                      "/C$",
                                      "/[^/]*$",
                                      "/A|B/Groups/.*$",
                                      "/A/Groups/.*/Tail/.*$",
                                      "/B.*",
                                      "/A/Groups/.*/Inner/.*$",
                                      "(",
                                      "/A/Groups/.*/(?!H).*$",
                                      "/A.*/(.).*",
                                      "/A/Groups/A/.*$",
                                      "/A/Groups/MET 1/$",
                                      "/A/Groups/.*/(C).*\\2$"};
        for (const QString& pattern : patterns) {
            compare(entry, nameExpression(entry, pattern), random);
            compare(Space::instance(), nameExpression(Space::instance(), pattern), random);
            compare(Space::instance(), nameExpression(entry, pattern), random);
        }
        // A root further down, an atom and an item without atoms.
        compare(itemAt(entry, {"A", "Groups", "MET 1"}), "/1odd/A/Groups/MET 1/C.*", random);
        compare(itemAt(entry, {"A", "Groups", "MET 1", "Backbone"}), "/1odd/.*/C.*", random);
        compare(itemAt(entry, {"A", "Groups", "MET 1", "N"}), "/1odd/.*/N$", random);
        compare(itemAt(entry, {"A", "Bonds"}), ".*", random);
    }

    // A group has a name of its own but gives none to what it holds: it says nothing of the names
    // below it.
    void atomsFurtherDownInAGroupAreFoundByTheirNames() {
        std::mt19937 random(4);
        Compound* entry = memory_host::makeDetached("1odd", "Composite");
        Compound* residue =
            make(make(make(entry, "A", "Molecule"), "Groups", "Composite"), "R 1", "Residue");
        Compound* outer = make(residue, "Outer", "Group");
        makeAtoms(make(outer, "Part", "Composite"), {"CA", "CB"});
        makeAtoms(make(outer, "Rest", "Composite"), {"CA"});
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            memory_host::attach(entry, Space::instance());
        }
        const std::vector<Compound*> atoms = atomsBelow(entry);
        QCOMPARE(QString::fromLatin1(atoms[0]->GetFQName()), "/1odd/A/Groups/R 1/Part/CA");
        for (const char* pattern :
             {"/A/Groups/R 1/Part/.*$", "/A/Groups/R 1/Outer/.*$", "/A/Groups/R 1/Rest/CA$",
              "/A/Groups/R 1/[^O].*$", "/A/Groups/R 1/.*$"})
            for (Compound* root : {entry, residue, outer})
                compare(root, QStringLiteral("/1odd") + QLatin1String(pattern), random);
        const DataPoint<Compound> guard(nullptr, entry);
        for (Compound* atom : atoms)
            atom->SetSelected(false);
        applySetOperation(entry, SetOperation::Union, "/1odd/A/Groups/R 1/Part/.*$");
        QVERIFY(selection(atoms) == (std::vector<bool>{true, true, false}));
        applySetOperation(entry, SetOperation::Difference, "/1odd/A/Groups/R 1/Outer/.*$");
        QVERIFY(selection(atoms) == (std::vector<bool>{true, true, false}));
    }

    void generatedPatternsDoTheSameBothWays() {
        PatternGenerator generator(5);
        std::mt19937 random(5);
        for (const char* name : {"1ubq", "1.ubq(2)+[x]", "m*"}) {
            Compound* entry = addOddStructure(name);
            for (int i = 0; i < 300; ++i)
                compare(entry, generator.expressionFor(entry->GetFQName()), random);
        }
        for (int i = 0; i < 300; ++i)
            compare(Space::instance(), generator.expressionFor(""), random);
    }

    void realStructuresGiveTheSameBothWays_data() {
        QTest::addColumn<QString>("file");
        for (const char* name : {"1ubq.pdb", "1ejg.pdb", "1tii.pdb"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void realStructuresGiveTheSameBothWays() {
        QFETCH(QString, file);
        std::mt19937 random(2);
        Compound* entry = memory_host::openFile(structure(file).toStdString()).items.front();
        for (const QString& pattern :
             {namePattern(".*", ".*", ".*"), namePattern("A", ".*", "CA"),
              namePattern(".*", "(ALA|GLY) .*", "C.?"), namePattern(".*", ".* \\d", "[^H].*"),
              namePattern("[B-H]", ".*", ".*"), namePattern(".*", "(?!HOH).*", "(?!H).*"),
              namePattern("A|B", "HOH .*", "O")})
            compare(entry, nameExpression(entry, pattern), random);
    }

    void nullIsNoRoot() {
        for (const SetOperation operation : operations)
            QCOMPARE(applySetOperation(nullptr, operation, ".*"), QString());
    }

    void unionTwiceIsOnceAndDifferenceTakesItBack() {
        Compound* entry = addStructure("1abc");
        const DataPoint<Compound> guard(nullptr, entry);
        const QString expression = nameExpression(entry, namePattern("A", ".*", "C.*"));
        applySetOperation(entry, SetOperation::Union, expression);
        const std::vector<Compound*> atoms = atomsBelow(entry);
        const std::vector<bool> once = selection(atoms);
        QCOMPARE(std::count(once.begin(), once.end(), true), 3);
        applySetOperation(entry, SetOperation::Union, expression);
        QVERIFY(selection(atoms) == once);
        applySetOperation(entry, SetOperation::Difference, expression);
        QVERIFY(!entry->HasSelected());
    }

    void anExpressionThatIsCutOffChangesNothing() {
        std::mt19937 random(3);
        Compound* entry = addOddStructure("1odd");
        const std::vector<Compound*> atoms = atomsBelow(entry);
        const DataPoint<Compound> guard(nullptr, entry);
        for (std::size_t i = 0; i < atoms.size(); ++i)
            atoms[i]->SetSelected(random() % 2);
        const std::vector<bool> before = selection(atoms);
        for (const SetOperation operation : operations) {
            const QString line = applySetOperation(
                entry, operation,
                nameExpression(entry, namePattern("(.{0,900}){0,900}", ".*", ".*")));
            QVERIFY(
                line.startsWith("Name pattern \"/1odd/(.{0,900}){0,900}/Groups/.*/.*$\" cut off"));
            QVERIFY(selection(atoms) == before);
        }
    }
};

REGISTER_TEST(SetAlgebraTest)
#include "SetAlgebraTest.moc"
