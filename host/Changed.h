// What a change was made to, in the words of its label: "40 atoms", "residue MET 1".
#pragma once

#include "Compound.h"
#include "DataPointBase.h"
#include "Kinds.h"

#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace TAVIK {

/// What users call an item of kind `T`.
template <class T> inline constexpr const char* kindWord = "item";
template <> inline constexpr const char* kindWord<Atom> = "atom";
template <> inline constexpr const char* kindWord<Bond> = "bond";
template <> inline constexpr const char* kindWord<Group> = "group";
template <> inline constexpr const char* kindWord<Residue> = "residue";
template <> inline constexpr const char* kindWord<Molecule> = "chain";
template <> inline constexpr const char* kindWord<Surface> = "surface";
template <> inline constexpr const char* kindWord<Grid> = "grid";

/// So many items of a kind, or a single one by its name.
class Changed {
public:
    /// Nothing that could be named, until items are added that may be of any kind.
    Changed() = default;
    /// So many of a kind, which is a word as "atom".
    explicit Changed(const char* kind, std::size_t count = 0) : m_kind(kind), m_count(count) {}
    /// A single item, which may be gone when the text is asked for. Its name is left out if there
    /// is no memory for it.
    explicit Changed(const Compound& item) noexcept : m_kind("item"), m_count(1) {
        try {
            m_name = nameOf(item);
        } catch (const std::bad_alloc&) {
        }
    }
    /// These items, all of one kind; they may be gone, too.
    Changed(const char* kind, const std::vector<Compound*>& items) noexcept
        : Changed(items.size() == 1 ? Changed(*items.front()) : Changed(kind, items.size())) {}

    /// Counts one more, which is there until the text is asked for.
    void add(const Compound* item) {
        if (m_count++ == 0)
            m_first = item;
    }
    /// The same for one that may be of another kind.
    void addOfAnyKind(const Compound* item) {
        if (m_count > 0 && &typeid(*item) != &typeid(*m_first))
            m_kind = "item";
        add(item);
    }
    std::size_t count() const { return m_count; }

    /// "40 atoms", "no atoms", "residue MET 1"; empty where nothing can be named.
    std::string text() const {
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

private:
    // An item of a kind that has no word is told by its name alone, of which the beginning will do.
    static std::string nameOf(const Compound& item) {
        constexpr std::size_t longest = 40;
        std::string name = item.GetName();
        if (name.size() > longest)
            name.replace(longest - 3, std::string::npos, "...");
        const std::string word = wordOf(item);
        return word.empty() ? name : word + ' ' + name;
    }
    static std::string wordOf(const Compound& item) {
        return wordAmong<Atom, Bond, Group, Residue, Molecule, Surface, Grid>(item);
    }
    template <class... Kinds> static const char* wordAmong(const Compound& item) {
        const char* word = "";
        (void)(... || (dynamic_cast<const Kinds*>(&item) && (word = kindWord<Kinds>)));
        return word;
    }
    static std::string severalOf(const std::string& word) {
        return word.back() == 'y' ? word.substr(0, word.size() - 1) + "ies" : word + 's';
    }

    const char* m_kind = "";
    std::size_t m_count = 0;
    const Compound* m_first = nullptr;
    std::string m_name;
};

/// Gives the change of `guard` a label: `deed` with what was changed in the place of "%1", or else
/// behind it. An empty `deed` takes the label away. Without memory the label stays as it was.
inline void setLabel(DataPointBase& guard, std::string_view deed, const Changed& changed) noexcept {
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
