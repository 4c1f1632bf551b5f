#include "Items.h"

#include <memory>

namespace memory_host {

Compound* newItem(Kind kind, std::string_view text) {
    Name name = Name::component(text);
    switch (kind) {
    case Kind::Composite:
        return new CompositeItem(std::move(name));
    case Kind::Molecule:
        return new MoleculeItem(std::move(name));
    case Kind::Residue:
        return new ResidueItem(std::move(name));
    case Kind::Group:
        return new GroupItem(std::move(name));
    case Kind::Atom: {
        auto atom = std::make_unique<AtomItem>(std::move(name));
        atom->setValues({.name = {}, .type = "X", .position = {}});
        return atom.release();
    }
    case Kind::Bond:
        return new BondItem(std::move(name));
    case Kind::Surface:
        return new SurfaceItem(std::move(name));
    case Kind::Grid:
        return new GridItem(std::move(name));
    case Kind::PolyLine:
        return new PolyLineItem(std::move(name));
    case Kind::Set:
        return new SetItem(std::move(name));
    case Kind::Space:
        break;
    }
    return nullptr;
}

} // namespace memory_host
