#include "PdbInsertions.h"

#include <algorithm>
#include <tuple>

namespace memory_host::pdb {

namespace {

// The rows that a residue has in the file.
struct Extent {
    std::uint32_t first = SavedAtom::newRow;
    std::uint32_t last = 0;
    bool hasNew = false;

    bool hasRows() const { return first != SavedAtom::newRow; }
};

Extent extentOf(const SavedModel& model, std::size_t residue) {
    Extent extent;
    for (std::uint32_t i = model.residues[residue].firstAtom; i != model.atomEnd(residue); ++i) {
        const std::uint32_t row = model.atoms[i].row;
        if (row == SavedAtom::newRow) {
            extent.hasNew = true;
            continue;
        }
        extent.first = std::min(extent.first, row);
        extent.last = std::max(extent.last, row);
    }
    return extent;
}

class ModelInsertions {
public:
    ModelInsertions(const SavedModel& model, std::uint32_t index) : m_model(model), m_index(index) {
        for (std::size_t i = 0; i != model.residues.size(); ++i)
            m_extents.push_back(extentOf(model, i));
    }

    void addTo(std::vector<Insertion>& all) const {
        const std::vector<std::uint32_t> following = followingRows();
        const Extent* before = nullptr; // The last one of the chain that has rows.
        for (std::size_t i = 0; i != m_extents.size(); ++i) {
            if (i != 0 && m_model.residues[i].chain != m_model.residues[i - 1].chain)
                before = nullptr;
            if (m_extents[i].hasRows())
                before = &m_extents[i];
            if (m_extents[i].hasNew)
                all.push_back(insertion(i, before, following[i]));
        }
    }

private:
    // By residue: the first row of the next one in the chain that has rows, or newRow.
    std::vector<std::uint32_t> followingRows() const {
        std::vector<std::uint32_t> rows(m_extents.size(), SavedAtom::newRow);
        for (std::size_t i = rows.size(); i-- > 1;) {
            const bool isSameChain = m_model.residues[i].chain == m_model.residues[i - 1].chain;
            if (isSameChain)
                rows[i - 1] = m_extents[i].hasRows() ? m_extents[i].first : rows[i];
        }
        return rows;
    }

    Insertion insertion(std::size_t residue, const Extent* before, std::uint32_t following) const {
        Insertion made;
        made.model = m_index;
        made.residue = static_cast<std::uint32_t>(residue);
        made.isResidueNew = !m_extents[residue].hasRows();
        if (before) {
            made.rows = before->last + 1;
            made.like = before->first;
        } else if (following != SavedAtom::newRow) {
            made.rows = following;
            made.where = Insertion::Where::BeforeRow;
            made.like = following;
        } else {
            made.rows = m_model.endRow;
            made.where = Insertion::Where::AfterChain;
        }
        return made;
    }

    const SavedModel& m_model;
    std::uint32_t m_index;
    std::vector<Extent> m_extents; ///< by residue
};

} // namespace

std::vector<Insertion> insertionsOf(const SavedStructure& structure) {
    std::vector<Insertion> all;
    for (std::uint32_t i = 0; i != structure.models.size(); ++i)
        ModelInsertions(structure.models[i], i).addTo(all);
    std::ranges::stable_sort(all, {},
                             [](const Insertion& one) { return std::pair(one.rows, one.where); });
    return all;
}

} // namespace memory_host::pdb
