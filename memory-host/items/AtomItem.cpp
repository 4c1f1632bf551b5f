#include "AtomItem.h"

#include "ElementColours.h"
#include "PartialCharge.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace memory_host {

namespace {

bool isPosition(const TAVIK::Vertex& position) {
    return position.isValid() && std::isfinite(position[0]) && std::isfinite(position[1]) &&
           std::isfinite(position[2]);
}

std::uint16_t asModel(unsigned int number) {
    return static_cast<std::uint16_t>(
        std::min<unsigned int>(number, std::numeric_limits<std::uint16_t>::max()));
}

std::string residuePrefix(const HostItem& atom) {
    const Holder* residue = residueAround(atom);
    return residue ? residue->name.text() + ' ' : std::string();
}

} // namespace

std::string BondItem::GetName() const {
    if (!m_record.name.isEmpty() || !m_atoms[0])
        return m_record.name.text();
    const HostItem& a = HostItem::of(m_atoms[0]);
    const HostItem& b = HostItem::of(m_atoms[1]);
    if (residueAround(a) == residueAround(b))
        return residuePrefix(a) + a.name.text() + '-' + b.name.text();
    return residuePrefix(a) + a.name.text() + " - " + residuePrefix(b) + b.name.text();
}

AtomItem* BondItem::atom(int end) const {
    return static_cast<AtomItem*>(m_atoms[static_cast<std::size_t>(end)]);
}

int BondItem::endAt(const AtomItem* atom) const {
    return m_atoms[0] == atom ? 0 : 1;
}

BondItem* BondItem::next(const AtomItem* atom) const {
    return m_links[static_cast<std::size_t>(endAt(atom))].next;
}

void BondItem::connect(AtomItem* a, AtomItem* b) {
    m_atoms = {a, b};
    for (const int end : {0, 1})
        m_links[static_cast<std::size_t>(end)] = {atom(end)->m_bonds, nullptr};
    relink();
    updateShown();
}

void BondItem::relink() {
    m_record.set(HostItem::Unlinked, false);
    for (const int end : {0, 1}) {
        AtomItem* const at = atom(end);
        const Links& links = m_links[static_cast<std::size_t>(end)];
        if (links.next)
            links.next->m_links[static_cast<std::size_t>(links.next->endAt(at))].previous = this;
        if (links.previous)
            links.previous->m_links[static_cast<std::size_t>(links.previous->endAt(at))].next =
                this;
        else
            at->m_bonds = this;
    }
}

void BondItem::unlink() {
    m_record.set(HostItem::Unlinked, true);
    for (const int end : {0, 1}) {
        AtomItem* const at = atom(end);
        const Links& links = m_links[static_cast<std::size_t>(end)];
        if (links.next)
            links.next->m_links[static_cast<std::size_t>(links.next->endAt(at))].previous =
                links.previous;
        if (links.previous)
            links.previous->m_links[static_cast<std::size_t>(links.previous->endAt(at))].next =
                links.next;
        else
            at->m_bonds = links.next;
    }
}

void BondItem::disconnect() {
    if (!m_atoms[0])
        return;
    if (!m_record.has(HostItem::Unlinked))
        unlink();
    m_atoms = {};
}

std::int32_t BondItem::markShown() {
    bool shown = m_record.has(HostItem::Visible);
    for (const int end : {0, 1})
        shown = shown && (!m_atoms[0] || atom(end)->IsVisible());
    return memory_host::markShown(m_record, shown);
}

void BondItem::updateShown() {
    countShown(m_record, markShown());
}

void BondItem::hide() {
    countShown(m_record, memory_host::markShown(m_record, false));
}

AtomItem::AtomItem(Name name) : LeafItem(std::move(name)) {
    static_assert(sizeof(AtomItem) <= 64, "an atom is larger than a cache line");
    static_assert(sizeof(TAVIK::AtomDetails) <= annexSize);
    static_assert(std::is_trivially_destructible_v<TAVIK::AtomDetails>);
    ::new (annexOf(this)) TAVIK::AtomDetails;
}

std::int32_t AtomItem::markShown() {
    const std::int32_t change = memory_host::markShown(
        m_record, m_record.has(HostItem::Visible) && !m_record.has(HostItem::OtherModel));
    if (change > 0)
        for (BondItem* bond = m_bonds; bond; bond = bond->next(this))
            bond->updateShown();
    if (change < 0)
        for (BondItem* bond = m_bonds; bond; bond = bond->next(this))
            bond->hide();
    return change;
}

void AtomItem::updateShown() {
    countShown(m_record, markShown());
}

void AtomItem::setValues(const TAVIK::AtomValues& values) {
    // What can fail comes before the first change.
    m_record.type = Name(values.type);
    setPosition(values.position);
    m_temperature = values.temperature;
    setModel(values.model);
    ::new (annexOf(this)) TAVIK::AtomDetails(values.details);
    m_record.color = defaultColor(m_record).rgba();
}

bool AtomItem::hasValues(const TAVIK::AtomValues& values) const {
    return isAt(values.position) && isInModel(values.model) &&
           m_temperature == values.temperature && details() == values.details &&
           m_record.type.text() == values.type;
}

void AtomItem::swapDescription(Description& other) noexcept {
    auto& details = *static_cast<TAVIK::AtomDetails*>(annexOf(this));
    std::swap(m_record.type, other.type);
    std::swap(m_temperature, other.temperature);
    std::swap(m_record.color, other.color);
    std::swap(details, other.details);
}

void AtomItem::setPosition(const TAVIK::Vertex& position) {
    for (const std::size_t axis : {0, 1, 2})
        m_position[axis] = position[axis];
    m_record.set(HostItem::HasPosition, isPosition(position));
}

bool AtomItem::isAt(const TAVIK::Vertex& position) const {
    return m_record.has(HostItem::HasPosition) == isPosition(position) &&
           m_position == std::array{position[0], position[1], position[2]};
}

void AtomItem::setModel(unsigned int model) {
    m_record.model = asModel(model);
}

bool AtomItem::isInModel(unsigned int model) const {
    return m_record.model == asModel(model);
}

} // namespace memory_host

TAVIK::PartialCharge TAVIK::GetPartialCharge(const Atom* atom) {
    const auto* const charged = dynamic_cast<const memory_host::ChargedAtomItem*>(atom);
    return charged ? PartialCharge{charged->m_charge, charged->m_radius, true} : PartialCharge{};
}
