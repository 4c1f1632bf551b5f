// What files say of atoms beside name, element, position and temperature factor; and how an atom is
// made with all of its values, moved, or put into another alternative model.
#pragma once

#include "Kinds.h"
#include "PartialCharge.h"

#include <cstdint>
#include <string_view>

namespace TAVIK {

/// What a file says of an atom beside what the atom itself answers. The element is its GetType().
struct AtomDetails {
    static constexpr std::int32_t noSerial = -1;

    float occupancy = 1.0F;         ///< 1 where a file gives none
    std::int32_t serial = noSerial; ///< the file's number of the atom
    std::int8_t formalCharge = 0;   ///< elementary charges
    char alternative = '\0';        ///< first letter of the alternative location, or 0
    bool isHetero = false;          ///< HETATM, as against ATOM

    bool operator==(const AtomDetails&) const = default;
};

/// The details of an atom; those of a new AtomDetails for null.
HOST_EXPORT AtomDetails GetAtomDetails(const Atom* atom);

/// The identifiers that an mmCIF file gives a residue beside the author's.
struct LabelIds {
    std::string_view chain;  ///< label_asym_id
    std::string_view number; ///< label_seq_id
};

/// The label ids of a residue, or of the residue that an atom is in. Empty where the file has none,
/// for every other item, and for null. The texts are valid until the residue is destroyed.
HOST_EXPORT LabelIds GetLabelIds(const Compound* item);

/// What DataMaker::makeAtom makes an atom of. Texts are copied.
struct AtomValues {
    std::string_view name;    ///< as "CA"
    std::string_view type;    ///< element symbol as "C" or "Cu"; "X" where it is unknown
    Vertex position;          ///< Å
    float temperature = 0.0F; ///< Å²
    unsigned int model = 0;   ///< 0: shared by all alternative models; at most 65535
    PartialCharge partial{};
    AtomDetails details{};
};

/// Moves an atom; the caller holds a good update or add guard. A position that is not valid, or
/// not finite, leaves the atom without one. Null does nothing, nor does the position it has.
HOST_EXPORT void SetAtomPosition(Atom* atom, const Vertex& position);
/// Puts an atom into an alternative model of its residue, from 1 to 65535, or with 0 into all of
/// them; larger numbers count as 65535. The caller holds a good update or add guard. The active
/// model stays unless it has no atoms any more, or is the first. Null does nothing, nor does the
/// model it is in.
HOST_EXPORT void SetAtomModel(Atom* atom, unsigned int model);

} // namespace TAVIK
