// Chemical elements by number: symbols and covalent radii.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace memory_host {

/// An element by its place in the table; 0 is the unknown one.
using Element = std::uint8_t;
constexpr Element unknownElement = 0;
/// Number of elements, the unknown one and deuterium included.
constexpr std::size_t elementCount = 120;

/// The element of a symbol in any case, as "CU", "c" or " C"; unknown for anything else.
Element elementOf(std::string_view symbol);
/// The element of an atom by the four columns of its name in a PDB file: the symbol ends in the
/// second one, unless the name fills all four.
Element elementOfPdbName(std::string_view columns, bool inPolymer);
/// The element of an atom by its name alone, as "CA" or "1HB", where nothing else tells it.
Element elementOfName(std::string_view name, bool inPolymer);
/// The same for files where all names begin in one column: "CA" and "HE1" are then a carbon and a
/// hydrogen even in unknown residues.
Element elementOfLeftName(std::string_view name, bool inPolymer);
/// Whether the name begins with a symbol of one letter in the first column, where a regular file
/// has it in the second: then all names of the file may begin in the first.
bool isLeftName(std::string_view columns);
/// The element of an ion, whose name is that of its residue, in any column; unknown for other
/// atoms.
Element elementOfIon(std::string_view name, std::string_view residue);
/// The symbol, as "Cu"; "X" for the unknown element.
const char* elementSymbol(Element element);
/// Covalent radius in Å, after B. Cordero et al., "Covalent radii revisited", Dalton Trans. 2008,
/// 2832; 0.5 for the unknown element.
float covalentRadius(Element element);
/// Hydrogen or deuterium.
bool isHydrogen(Element element);
bool isMetal(Element element);
/// Nitrogen, oxygen or sulfur, which hold metals.
bool isMetalLigand(Element element);
/// Carbon or phosphorus, which are bonded to the ligands of a metal.
bool isCarbonOrPhosphorus(Element element);

} // namespace memory_host
