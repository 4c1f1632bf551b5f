#include "CommandTools.h"

#include "DataAdder.h"
#include "DataMaker.h"
#include "Space.h"
#include "Traversal.h"
#include "items/Building.h"

#include <QMenu>
#include <QMenuBar>

namespace command_tools {

using TAVIK::Compound;

Compound* addChain(const std::string& name, const std::vector<ResidueSpec>& residues) {
    Compound* entry = memory_host::makeDetached(name, "Composite");
    Compound* chain = TAVIK::DataMaker::makeCore(entry, "A", "Molecule");
    Compound* groups = TAVIK::DataMaker::makeCore(chain, "Groups", "Composite");
    Compound* bonds = TAVIK::DataMaker::makeCore(chain, "Bonds", "Composite");
    for (const ResidueSpec& spec : residues) {
        Compound* residue = TAVIK::DataMaker::makeCore(groups, spec.name, "Residue");
        Compound* group = TAVIK::DataMaker::makeCore(residue, "Group", "Group");
        Compound* previous = nullptr;
        for (const AtomSpec& atom : spec.atoms) {
            Compound* made = memory_host::addAtom(
                group, {atom.name, atom.type, atom.position, atom.temperature, atom.model});
            if (previous)
                memory_host::addBond(bonds, previous, made);
            previous = made;
        }
    }
    const DataAdder<Compound> guard(nullptr, entry);
    memory_host::attach(entry, TAVIK::Space::instance());
    return entry;
}

Compound* addLine(const std::string& name, const std::vector<float>& x) {
    ResidueSpec residue{"UNL 1", {}};
    for (std::size_t i = 0; i != x.size(); ++i)
        residue.atoms.push_back({"C" + std::to_string(i), "C", {x[i], 0.0F, 0.0F, true}});
    return addChain(name, {residue});
}

std::vector<Compound*> atomsOf(Compound* root) {
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(root, atoms, true);
    return atoms;
}

namespace {

QString namesWhere(Compound* root, bool (Compound::*holds)() const) {
    QStringList names;
    for (const Compound* atom : atomsOf(root))
        if ((atom->*holds)())
            names << QString::fromLatin1(atom->GetName());
    return names.join(u' ');
}

} // namespace

QString selectedNames(Compound* root) {
    return namesWhere(root, &Compound::IsSelected);
}

QString visibleNames(Compound* root) {
    return namesWhere(root, &Compound::IsVisible);
}

void trigger(Vuxo& window, const QString& menu, const QString& label) {
    for (const QAction* title : window.menuBar()->actions())
        if (title->text() == menu)
            for (QAction* action : title->menu()->actions())
                if (action->text() == label) {
                    action->trigger();
                    return;
                }
    QFAIL(qPrintable(QStringLiteral("there is no entry %1/%2").arg(menu, label)));
}

void pressEnter(QDialog& dialog) {
    QTest::keyClick(&dialog, Qt::Key_Return);
}

void pressEscape(QDialog& dialog) {
    QTest::keyClick(&dialog, Qt::Key_Escape);
}

} // namespace command_tools
