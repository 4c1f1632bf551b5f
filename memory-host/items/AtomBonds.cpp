#include "AtomBonds.h"

#include "AtomItem.h"

void TAVIK::GetBonds(const Atom* atom, std::vector<Bond*>& bonds) {
    const auto* const item = dynamic_cast<const memory_host::AtomItem*>(atom);
    if (!item)
        return;
    for (memory_host::BondItem* bond = item->m_bonds; bond; bond = bond->next(item))
        bonds.push_back(bond);
}
