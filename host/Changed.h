// What a change was made to, in the words of its label: "40 atoms", "residue MET 1".
#pragma once

#include "HostExport.h"
#include "Kinds.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

class DataPointBase;

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
class HOST_EXPORT Changed {
public:
    /// Nothing that could be named, until items are added that may be of any kind.
    Changed();
    /// So many of a kind, which is a word as "atom" that outlives this.
    explicit Changed(const char* kind, std::size_t count = 0);
    /// A single item, which may be gone when the text is asked for. Its name is left out if there
    /// is no memory for it.
    explicit Changed(const Compound& item) noexcept;
    /// These items, all of one kind; they may be gone, too.
    Changed(const char* kind, const std::vector<Compound*>& items) noexcept;

    // Inline, as they are called for each of a million items.

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

    /// "40 atoms", "no atoms", "residue MET 1"; empty where nothing can be named. Of a long name
    /// the beginning is told.
    std::string text() const;

private:
    const char* m_kind = "";
    std::size_t m_count = 0;
    const Compound* m_first = nullptr;
    std::string m_name;
};

/// Gives the change of `guard` a label: `deed` with what was changed in the place of "%1", or else
/// behind it. An empty `deed` takes the label away. Without memory the label stays as it was.
HOST_EXPORT void setLabel(DataPointBase& guard, std::string_view deed,
                          const Changed& changed) noexcept;

} // namespace TAVIK
