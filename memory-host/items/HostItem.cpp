#include "HostItem.h"

#include "ElementColours.h"

#include <array>

namespace memory_host {

namespace {

constexpr std::array<const char*, kindCount> kindNames = {
    "Composite", "Space",   "Molecule", "Residue",  "Group", "Atom",
    "Bond",      "Surface", "Grid",     "PolyLine", "Set"};

} // namespace

bool kindOfName(const std::string& className, Kind& kind) {
    for (std::size_t i = 0; i != kindNames.size(); ++i) {
        kind = static_cast<Kind>(i);
        // Kinds that need more than a name have functions of their own, and there is one space.
        const bool makable = kind != Kind::Space && kind < Kind::PolyLine;
        if (makable && className == kindNames[i])
            return true;
    }
    return false;
}

std::string kindName(Kind kind) {
    return kindNames[static_cast<std::size_t>(kind)];
}

} // namespace memory_host

namespace TAVIK {

namespace {
std::uint32_t lastId = 0;
}

HostItem::HostItem(memory_host::Kind ofKind, memory_host::Name itsName)
    : id(ofKind == memory_host::Kind::Space ? 0 : ++lastId), color(0), name(std::move(itsName)),
      kind(ofKind) {
    color = memory_host::defaultColor(*this).rgba();
}

std::uint32_t HostItem::lastIdentifier() {
    return lastId;
}

} // namespace TAVIK
