#include "MmcifFates.h"

#include "MmcifAtoms.h"

#include <algorithm>
#include <unordered_set>

namespace memory_host::mmcif {

namespace {

using cif::Category;

// The categories of the block, which stand together.
class Block {
public:
    Block(const cif::Contents& contents, std::size_t atoms) {
        const std::vector<Category>& all = contents.categories;
        const std::size_t block = all[atoms].block;
        const auto begin = std::ranges::lower_bound(all, block, {}, &Category::block);
        const auto end = std::ranges::upper_bound(all, block, {}, &Category::block);
        m_first = static_cast<std::size_t>(begin - all.begin());
        m_categories = {begin, end};
    }

    std::span<const Category> categories() const { return m_categories; }
    const Category* find(std::string_view name) const {
        const auto found = std::ranges::find(m_categories, name, &Category::name);
        return found == m_categories.end() ? nullptr : &*found;
    }
    RowFate& fateOf(const Category& category, std::vector<RowFate>& fates) const {
        return fates[m_first + static_cast<std::size_t>(&category - m_categories.data())];
    }

private:
    std::span<const Category> m_categories;
    std::size_t m_first = 0;
};

// The rows of displacements name atoms by their ids.
void dropDisplacements(std::string_view text, const Category& atoms, const Category& displacements,
                       const std::vector<bool>& isKept, RowFate& fate) {
    const std::size_t atomId = atoms.column("id");
    const std::size_t id = displacements.column("id");
    if (atomId == atoms.columns.size() || id == displacements.columns.size())
        return;
    std::unordered_set<std::string_view> gone;
    cif::Rows atomRows(text, atoms);
    for (std::size_t row = 0; atomRows.next(); ++row)
        if (!isKept[row])
            gone.insert(contentOf(atomRows[atomId]));
    cif::Rows rows(text, displacements);
    for (std::size_t row = 0; rows.next(); ++row)
        if (gone.contains(contentOf(rows[id])))
            fate.drop(row, displacements.rowCount);
}

} // namespace

void findFates(std::string_view text, const cif::Contents& contents, const BlockChange& change,
               std::vector<RowFate>& fates) {
    const Category& atoms = contents.categories[change.atoms];
    const Block block(contents, change.atoms);
    if (std::ranges::find(change.isKept, false) != change.isKept.end()) {
        References references(text, block.categories());
        references.readAtoms(atoms, change.isKept);
        std::ranges::move(references.fates(), &block.fateOf(block.categories().front(), fates));
        if (const Category* displacements = block.find("_atom_site_anisotrop"))
            dropDisplacements(text, atoms, *displacements, change.isKept,
                              block.fateOf(*displacements, fates));
    }
    if (const Category* connections = block.find("_struct_conn"))
        updateBonds(text, atoms, *connections, change.lost, change.kept,
                    block.fateOf(*connections, fates));
}

} // namespace memory_host::mmcif
