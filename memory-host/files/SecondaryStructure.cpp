#include "SecondaryStructure.h"

#include "ResidueKey.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace memory_host {

namespace {

class Trimming {
public:
    Trimming(const gemmi::Model& model, const std::vector<gemmi::Chain>& before) {
        for (const gemmi::Chain& chain : model.chains)
            for (const gemmi::Residue& residue : chain.residues)
                if (isWritable(residue.seqid))
                    m_left.insert(residueKey(chain.name, residue));
        for (const gemmi::Chain& chain : before)
            for (const gemmi::Residue& residue : chain.residues) {
                std::string key = residueKey(chain.name, residue);
                const bool isLeft = m_left.contains(key);
                m_places.emplace(std::move(key), m_before.size());
                m_before.push_back({&chain, &residue, isLeft});
            }
    }

    bool isThere(const gemmi::AtomAddress& address) const {
        return m_left.contains(residueKey(address.chain_name, address.res_id));
    }
    // Trims a range of residues. Returns how many went, or nothing if all did, or the file did not
    // have the ends.
    std::optional<std::size_t> trim(gemmi::AtomAddress& start, gemmi::AtomAddress& end) const {
        if (isThere(start) && isThere(end))
            return 0;
        const std::optional<std::size_t> from = placeOf(start);
        const std::optional<std::size_t> to = placeOf(end);
        if (!from || !to || *to < *from || m_before[*from].chain != m_before[*to].chain)
            return std::nullopt;
        std::size_t first = *from;
        std::size_t last = *to;
        while (first != last && !m_before[first].isLeft)
            ++first;
        while (first != last && !m_before[last].isLeft)
            --last;
        if (!m_before[first].isLeft)
            return std::nullopt;
        put(start, first);
        put(end, last);
        return *to - *from - (last - first);
    }

private:
    struct Residue {
        const gemmi::Chain* chain;
        const gemmi::Residue* residue;
        bool isLeft;
    };

    std::optional<std::size_t> placeOf(const gemmi::AtomAddress& address) const {
        const auto found = m_places.find(residueKey(address.chain_name, address.res_id));
        return found == m_places.end() ? std::nullopt : std::optional(found->second);
    }
    void put(gemmi::AtomAddress& address, std::size_t place) const {
        address.res_id.seqid = m_before[place].residue->seqid;
        address.res_id.name = m_before[place].residue->name;
    }

    std::unordered_set<std::string> m_left;
    std::vector<Residue> m_before; ///< of all chains, in the order of the file
    std::unordered_map<std::string, std::size_t> m_places; ///< among these
};

} // namespace

void trimSecondaryStructure(gemmi::Structure& structure, const std::vector<gemmi::Chain>& before) {
    if (structure.helices.empty() && structure.sheets.empty())
        return;
    const Trimming trimming(structure.models.front(), before);
    std::erase_if(structure.helices, [&trimming](gemmi::Helix& helix) {
        const auto gone = trimming.trim(helix.start, helix.end);
        if (gone && helix.length > static_cast<int>(*gone))
            helix.length -= static_cast<int>(*gone);
        return !gone;
    });
    for (gemmi::Sheet& sheet : structure.sheets) {
        std::erase_if(sheet.strands, [&trimming](gemmi::Sheet::Strand& strand) {
            return !trimming.trim(strand.start, strand.end);
        });
        if (!sheet.strands.empty())
            sheet.strands.front().sense = 0;
        for (gemmi::Sheet::Strand& strand : sheet.strands)
            if (!trimming.isThere(strand.hbond_atom1) || !trimming.isThere(strand.hbond_atom2))
                strand.hbond_atom1 = strand.hbond_atom2 = gemmi::AtomAddress();
    }
    std::erase_if(structure.sheets,
                  [](const gemmi::Sheet& sheet) { return sheet.strands.empty(); });
}

} // namespace memory_host
