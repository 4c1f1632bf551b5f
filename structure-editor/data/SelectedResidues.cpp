#include "SelectedResidues.h"

#include "Space.h"
#include "Traversal.h"

#include <algorithm>
#include <unordered_map>

using TAVIK::Compound;

namespace {

// The child with that identifier, by binary search, or `end`. Null children are skipped.
Compound** childOfId(Compound** begin, Compound** end, unsigned int id) {
    Compound** const none = end;
    while (begin != end) {
        Compound** const middle = begin + (end - begin) / 2;
        Compound** const child = std::find_if(middle, end, [](Compound* each) { return each; });
        if (child == end || (*child)->GetId() > id)
            end = middle;
        else if ((*child)->GetId() == id)
            return child;
        else
            begin = child + 1;
    }
    return none;
}

} // namespace

SelectedResidues::SelectedResidues(Compound* root) {
    std::vector<Compound*> residues;
    TAVIK::GetResidues(root, residues, false);
    std::unordered_map<Compound*, std::size_t> wanted;
    for (std::size_t i = 0; i != residues.size(); ++i)
        wanted.emplace(residues[i], i);
    m_residues.assign(residues.size(), nowhere);

    std::size_t left = wanted.size();
    const auto settle = [&] {
        const auto found = wanted.find(m_places.back().item);
        if (found == wanted.end())
            return;
        m_residues[found->second] = m_places.size() - 1;
        --left;
    };
    add(root, nowhere, 0);
    settle();
    // Breadth first, so that the loop ends before it enters residues.
    for (std::size_t above = 0; above != m_places.size() && left > 0; ++above) {
        Compound** const begin = m_places[above].item->ChildBegin();
        Compound** const end = m_places[above].item->ChildEnd();
        for (Compound** child = begin; child != end; ++child)
            if (*child && (*child)->HasSelected() && dynamic_cast<TAVIK::Composite*>(*child)) {
                add(*child, above, static_cast<std::size_t>(child - begin));
                settle();
            }
    }
}

void SelectedResidues::add(Compound* item, std::size_t above, std::size_t at) {
    m_places.push_back({item, item->GetId(), above, at});
}

bool SelectedResidues::Place::holds(Compound* candidate) const {
    return candidate == item && candidate->GetId() == id;
}

Compound* SelectedResidues::find(std::size_t index) {
    const std::size_t place = m_residues[index];
    return place == nowhere ? nullptr : find(m_places[place]);
}

Compound* SelectedResidues::find(Place& place) {
    const bool isRoot = place.above == nowhere;
    Compound* const parent = isRoot ? TAVIK::Space::instance() : find(m_places[place.above]);
    if (!parent)
        return nullptr;
    Compound** const begin = parent->ChildBegin();
    Compound** const end = parent->ChildEnd();
    if (place.at < static_cast<std::size_t>(end - begin) && place.holds(begin[place.at]))
        return place.item;
    // Top-level items are not ordered by identifier: files attach items that they made earlier.
    Compound** const found =
        isRoot ? std::find_if(begin, end, [&](Compound* each) { return place.holds(each); })
               : childOfId(begin, end, place.id);
    if (found == end || !place.holds(*found))
        return nullptr;
    place.at = static_cast<std::size_t>(found - begin);
    return place.item;
}
