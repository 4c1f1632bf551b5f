// How a row of an mmCIF category names an atom or a residue.
#pragma once

#include "MmcifAtoms.h"
#include "MmcifNaming.h"

#include <array>
#include <string_view>

namespace memory_host::mmcif {

/// The values of a row by parts, without quotes; empty where there are none.
using PartValues = std::array<std::string_view, PartCount>;

inline PartValues valuesOf(const cif::Rows& row, const PartColumns& columns) {
    PartValues values;
    for (std::size_t part = 0; part != PartCount; ++part)
        if (columns[part] < row.places().size())
            values[part] = contentOf(row[columns[part]]);
    return values;
}

/// Whether a row names something by the label ids alone.
inline bool isByLabel(const PartValues& values) {
    return values[PartAuthorChain].empty() || values[PartAuthorNumber].empty();
}

/// An atom or a residue, named by the author's ids or by the label ids.
struct Name {
    Name(const PartValues& values, bool byLabelIds) : byLabel(byLabelIds) {
        const auto first = [&](Part author, Part label) {
            const std::string_view chosen = values[byLabel ? label : author];
            return chosen.empty() ? values[byLabel ? author : label] : chosen;
        };
        chain = byLabel ? values[PartLabelChain] : first(PartAuthorChain, PartLabelChain);
        number = byLabel ? values[PartLabelNumber] : first(PartAuthorNumber, PartLabelNumber);
        insertion = byLabel ? std::string_view() : values[PartInsertion];
        residue = first(PartAuthorResidue, PartLabelResidue);
        atom = first(PartAuthorAtom, PartLabelAtom);
        letter = values[PartLetter];
        model = values[PartModel];
    }

    bool isAtSite(const Name& other) const {
        return chain == other.chain && number == other.number && insertion == other.insertion;
    }
    bool isInResidue(const Name& other) const {
        return isAtSite(other) && residue == other.residue && model == other.model;
    }

    bool byLabel;
    std::string_view chain;
    std::string_view number;
    std::string_view insertion;
    std::string_view residue;
    std::string_view atom;
    std::string_view letter;
    std::string_view model;
};

/// Adds a part of a name to a key. No part holds a line end.
inline void appendPart(std::string& key, std::string_view part) {
    key.append(part).push_back('\n');
}

/// Where in a chain a name is, as a key.
inline const std::string& siteKey(std::string& key, const Name& name) {
    key.assign(1, name.byLabel ? 'l' : 'a');
    appendPart(key, name.chain);
    appendPart(key, name.number);
    appendPart(key, name.insertion);
    return key;
}

} // namespace memory_host::mmcif
