#include "ElementColours.h"

#include <array>
#include <cstdint>
#include <memory>
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
    // Indexed by the symbol's number. Keeping the symbols keeps their numbers valid.
    struct ByType {
        std::array<Name, elementColours.size()> symbols;
        std::vector<std::uint32_t> colours;
    };
    static const auto* const byType = [] {
        auto made = std::make_unique<ByType>();
        for (std::size_t i = 0; i != elementColours.size(); ++i) {
            made->symbols[i] = Name(elementColours[i].symbol);
            const std::uint32_t type = made->symbols[i].number();
            if (type >= made->colours.size())
                made->colours.resize(type + 1, otherElement);
            made->colours[type] = elementColours[i].rgba;
        }
        return made.release();
    }();
    const std::uint32_t type = item.type.number();
    return Color(type < byType->colours.size() ? byType->colours[type] : otherElement);
}

} // namespace memory_host
