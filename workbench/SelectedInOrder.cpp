#include "SelectedInOrder.h"

#include "Kinds.h"
#include "Space.h"

#include <algorithm>

namespace workbench {

namespace {

using TAVIK::Compound;

void collect(Compound* item, std::size_t most, std::vector<Compound*>& out) {
    if (out.size() >= most || !item->HasSelected())
        return;
    if (dynamic_cast<TAVIK::Atom*>(item)) {
        out.push_back(item);
    } else if (dynamic_cast<TAVIK::Composite*>(item)) {
        for (Compound** child = item->ChildBegin(); child != item->ChildEnd() && out.size() < most;
             ++child)
            if (*child)
                collect(*child, most, out);
    }
}

} // namespace

std::vector<Compound*> selectedAtoms(Compound* root, std::size_t most) {
    std::vector<Compound*> atoms;
    collect(root, most, atoms);
    return atoms;
}

void SelectedInOrder::update() {
    m_atoms = selectedAtoms(TAVIK::Space::instance(), most + 1);
    m_hasAtoms = !m_atoms.empty();
    if (m_atoms.size() > most)
        m_atoms.clear();
    const auto rank = [this](const Compound* atom) {
        return std::find(m_ids.begin(), m_ids.end(), atom->GetId()) - m_ids.begin();
    };
    std::stable_sort(m_atoms.begin(), m_atoms.end(),
                     [&rank](const Compound* a, const Compound* b) { return rank(a) < rank(b); });
    m_ids.clear();
    for (const Compound* const atom : m_atoms)
        m_ids.push_back(atom->GetId());
}

void SelectedInOrder::forget() {
    m_atoms.clear();
}

} // namespace workbench
