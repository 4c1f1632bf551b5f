// The colours that items have from the start: atoms by their element, as molecular graphics has
// used them since the plastic models of Corey, Pauling and Koltun.
#include "HostItem.h"
#include "Names.h"

#include <array>
#include <cstdint>
#include <vector>

namespace memory_host {

namespace {

struct ElementColour {
    const char* symbol;
    std::uint32_t rgba;
};

constexpr std::array<ElementColour, 27> elementColours = {{
    {"H", 0xffffffff},  {"D", 0xffffffff},  {"C", 0xffc8c8c8},  {"N", 0xff8f8fff},
    {"O", 0xfff00000},  {"F", 0xffdaa520},  {"Na", 0xff0000ff}, {"Mg", 0xff228b22},
    {"Al", 0xff808090}, {"Si", 0xffdaa520}, {"P", 0xffffa500},  {"S", 0xffffc832},
    {"Cl", 0xff00ff00}, {"K", 0xff8a2be2},  {"Ca", 0xff808090}, {"Cr", 0xff808090},
    {"Mn", 0xff808090}, {"Fe", 0xffffa500}, {"Co", 0xfff08ca0}, {"Ni", 0xffa52a2a},
    {"Cu", 0xffa52a2a}, {"Zn", 0xffa52a2a}, {"Se", 0xffffa100}, {"Br", 0xffa52a2a},
    {"Cd", 0xffffd98f}, {"I", 0xffa020f0},  {"Au", 0xffdaa520},
}};
constexpr std::uint32_t otherElement = 0xffff1493;
constexpr std::uint32_t otherKind = 0xffffffff;

} // namespace

Color defaultColor(const HostItem& item) {
    if (item.kind != Kind::Atom)
        return Color(otherKind);
    // By the number of the symbol, all of which are numbered at once.
    static const auto* const byType = [] {
        auto* const colours = new std::vector<std::uint32_t>;
        for (const auto& [symbol, rgba] : elementColours) {
            const std::uint32_t type = internName(symbol);
            if (type >= colours->size())
                colours->resize(type + 1, otherElement);
            (*colours)[type] = rgba;
        }
        return colours;
    }();
    return Color(item.type < byType->size() ? (*byType)[item.type] : otherElement);
}

} // namespace memory_host
