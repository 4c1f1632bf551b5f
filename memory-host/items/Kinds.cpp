#include "Kinds.h"

namespace TAVIK {

Molecule::~Molecule() = default;
Residue::~Residue() = default;
Group::~Group() = default;
Atom::~Atom() = default;
Bond::~Bond() = default;
Surface::~Surface() = default;
Grid::~Grid() = default;

} // namespace TAVIK
