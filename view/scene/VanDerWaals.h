// Elements by their symbols, and how large their atoms are drawn.
#pragma once

#include <cstdint>
#include <string_view>

namespace view {

/// The atomic number of a symbol in any case, as "Cu" or "CU"; deuterium counts as hydrogen. 0 for
/// anything else.
std::uint8_t atomicNumber(std::string_view symbol);

/// The van der Waals radius in Å: of main-group elements by Mantina et al., J. Phys. Chem. A 113,
/// 5806 (2009), which completes and corrects the table of Bondi, J. Phys. Chem. 68, 441 (1964); of
/// transition metals and uranium by Bondi. Where neither has one, and for 0, it is 2 Å.
float vanDerWaalsRadius(std::uint8_t atomicNumber);

} // namespace view
