#include "Changed.h"

#include "Compound.h"
#include "DataPointBase.h"

#include <new>

namespace TAVIK {
namespace {

template <class... Kinds> const char* wordAmong(const Compound& item) {
    const char* word = "";
    (void)(... || (dynamic_cast<const Kinds*>(&item) && (word = kindWord<Kinds>)));
    return word;
}

std::string wordOf(const Compound& item) {
    return wordAmong<Atom, Bond, Group, Residue, Molecule, Surface, Grid>(item);
}

// An item of a kind that has no word is told by its name alone, of which the beginning will do.
std::string nameOf(const Compound& item) {
    constexpr std::size_t longest = 40;
    std::string name = item.GetName();
    if (name.size() > longest)
        name.replace(longest - 3, std::string::npos, "...");
    const std::string word = wordOf(item);
    return word.empty() ? name : word + ' ' + name;
}

std::string severalOf(const std::string& word) {
    return word.back() == 'y' ? word.substr(0, word.size() - 1) + "ies" : word + 's';
}

} // namespace

Changed::Changed() = default;

Changed::Changed(const char* kind, std::size_t count) : m_kind(kind), m_count(count) {}

Changed::Changed(const Compound& item) noexcept : m_kind("item"), m_count(1) {
    try {
        m_name = nameOf(item);
    } catch (const std::bad_alloc&) {
    }
}

Changed::Changed(const char* kind, const std::vector<Compound*>& items) noexcept
    : Changed(items.size() == 1 ? Changed(*items.front()) : Changed(kind, items.size())) {}

std::string Changed::text() const {
    if (m_count == 1 && m_first)
        return nameOf(*m_first);
    if (!m_name.empty())
        return m_name;
    std::string kind = m_kind;
    if (kind.empty() && m_first)
        kind = wordOf(*m_first);
    if (kind.empty())
        return m_count == 0 ? kind : std::to_string(m_count) + " items";
    if (m_count != 1)
        kind = severalOf(kind);
    return (m_count == 0 ? "no" : std::to_string(m_count)) + ' ' + kind;
}

void setLabel(DataPointBase& guard, std::string_view deed, const Changed& changed) noexcept {
    try {
        std::string label(deed);
        const std::string what = deed.empty() ? std::string() : changed.text();
        if (const std::size_t at = label.find("%1"); at != std::string::npos)
            label.replace(at, 2, what);
        else if (!what.empty())
            label += ' ' + what;
        guard.setLabel(label);
    } catch (const std::bad_alloc&) {
    }
}

} // namespace TAVIK
