// Writing the items that no file gives, or not as they are, with all that they are made of.
#pragma once

#include "JournalState.h"
#include "items/Items.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace memory_host {

/// Numbers texts, and writes each once.
class JournalTexts {
public:
    explicit JournalTexts(JournalBytes& bytes) : m_bytes(bytes) {}
    std::uint32_t number(const Name& name);

private:
    JournalBytes& m_bytes;
    std::uint32_t m_count = 0;
    std::vector<std::uint32_t> m_numbers; ///< by the number of the interned name; 0: none yet
};

/// A mesh or a grid's values, copied in pieces.
class BesideCopy {
public:
    BesideCopy(const SurfaceItem& surface, const std::string& name);
    BesideCopy(const GridItem& grid, const std::string& name);

    /// Copies a piece more; returns whether that was the last.
    bool step();
    JournalState::Beside take() { return std::move(m_made); }

private:
    JournalState::Beside m_made;
    std::vector<std::string_view> m_parts;
    std::size_t m_part = 0;
};

class MadeItems {
public:
    MadeItems(JournalState& state, const std::set<std::string>& written)
        : m_state(state), m_written(written), m_bytes(state.at(JournalSection::Made)),
          m_texts(state.at(JournalSection::Texts)) {}

    void add(const Compound& item, const HostItem& record);
    /// An atom, or a grid with its version, of a file that has others.
    void addChanged(const AtomItem& atom);
    void addChanged(const GridItem& grid);
    /// Goes on with what takes long: the members of sets, meshes, values. Returns whether that is
    /// all.
    bool step();
    JournalTexts& texts() { return m_texts; }

private:
    void writeValues(const Compound& item, const HostItem& record);
    void writeAtom(JournalBytes& bytes, const AtomItem& atom, const HostItem& record);
    template <class Item> void keepBeside(const Item& item, const std::string& name);
    bool stepMembers();

    JournalState& m_state;
    const std::set<std::string>& m_written;
    JournalBytes& m_bytes;
    JournalTexts m_texts;
    std::uint32_t m_last = 0; ///< identifier of the item before
    std::uint32_t m_lastChanged = 0;
    std::vector<SetRecord*> m_sets;
    std::size_t m_member = 0; ///< of the last set, the next to be written
    std::uint32_t m_lastMember = 0;
    std::vector<BesideCopy> m_copies;
};

} // namespace memory_host
