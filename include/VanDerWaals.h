// Elements by their symbols, and the radii of their atoms.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace elements_detail {

inline constexpr float unknownRadius = 2.00F;

struct Element {
    std::string_view symbol;
    float radius = unknownRadius;
};

// By atomic number.
inline constexpr std::array<Element, 119> elements = {{
    {""},          {"H", 1.10F},  {"He", 1.40F}, {"Li", 1.81F}, {"Be", 1.53F}, {"B", 1.92F},
    {"C", 1.70F},  {"N", 1.55F},  {"O", 1.52F},  {"F", 1.47F},  {"Ne", 1.54F}, {"Na", 2.27F},
    {"Mg", 1.73F}, {"Al", 1.84F}, {"Si", 2.10F}, {"P", 1.80F},  {"S", 1.80F},  {"Cl", 1.75F},
    {"Ar", 1.88F}, {"K", 2.75F},  {"Ca", 2.31F}, {"Sc"},        {"Ti"},        {"V"},
    {"Cr"},        {"Mn"},        {"Fe"},        {"Co"},        {"Ni", 1.63F}, {"Cu", 1.40F},
    {"Zn", 1.39F}, {"Ga", 1.87F}, {"Ge", 2.11F}, {"As", 1.85F}, {"Se", 1.90F}, {"Br", 1.83F},
    {"Kr", 2.02F}, {"Rb", 3.03F}, {"Sr", 2.49F}, {"Y"},         {"Zr"},        {"Nb"},
    {"Mo"},        {"Tc"},        {"Ru"},        {"Rh"},        {"Pd", 1.63F}, {"Ag", 1.72F},
    {"Cd", 1.58F}, {"In", 1.93F}, {"Sn", 2.17F}, {"Sb", 2.06F}, {"Te", 2.06F}, {"I", 1.98F},
    {"Xe", 2.16F}, {"Cs", 3.43F}, {"Ba", 2.68F}, {"La"},        {"Ce"},        {"Pr"},
    {"Nd"},        {"Pm"},        {"Sm"},        {"Eu"},        {"Gd"},        {"Tb"},
    {"Dy"},        {"Ho"},        {"Er"},        {"Tm"},        {"Yb"},        {"Lu"},
    {"Hf"},        {"Ta"},        {"W"},         {"Re"},        {"Os"},        {"Ir"},
    {"Pt", 1.72F}, {"Au", 1.66F}, {"Hg", 1.55F}, {"Tl", 1.96F}, {"Pb", 2.02F}, {"Bi", 2.07F},
    {"Po", 1.97F}, {"At", 2.02F}, {"Rn", 2.20F}, {"Fr", 3.48F}, {"Ra", 2.83F}, {"Ac"},
    {"Th"},        {"Pa"},        {"U", 1.86F},  {"Np"},        {"Pu"},        {"Am"},
    {"Cm"},        {"Bk"},        {"Cf"},        {"Es"},        {"Fm"},        {"Md"},
    {"No"},        {"Lr"},        {"Rf"},        {"Db"},        {"Sg"},        {"Bh"},
    {"Hs"},        {"Mt"},        {"Ds"},        {"Rg"},        {"Cn"},        {"Nh"},
    {"Fl"},        {"Mc"},        {"Lv"},        {"Ts"},        {"Og"},
}};

inline constexpr std::size_t letters = 26;

// 0 to 25 for a letter in any case; else 26.
constexpr std::size_t letterOf(char c) {
    if (c >= 'a' && c <= 'z')
        return static_cast<std::size_t>(c - 'a');
    if (c >= 'A' && c <= 'Z')
        return static_cast<std::size_t>(c - 'A');
    return letters;
}

// Numbers by first and second letter; 26 stands for no second one.
inline constexpr auto numbers = [] {
    std::array<std::array<std::uint8_t, letters + 1>, letters> table{};
    for (std::size_t i = 1; i != elements.size(); ++i) {
        const std::string_view symbol = elements[i].symbol;
        table[letterOf(symbol[0])][symbol.size() == 2 ? letterOf(symbol[1]) : letters] =
            static_cast<std::uint8_t>(i);
    }
    table[letterOf('D')][letters] = 1;
    return table;
}();

} // namespace elements_detail

/// The atomic number of a symbol in any case, as "Cu" or "CU"; deuterium counts as hydrogen. 0 for
/// anything else.
inline std::uint8_t atomicNumber(std::string_view symbol) {
    if (symbol.empty() || symbol.size() > 2)
        return 0;
    const std::size_t first = elements_detail::letterOf(symbol[0]);
    const std::size_t second =
        symbol.size() == 2 ? elements_detail::letterOf(symbol[1]) : elements_detail::letters;
    if (first == elements_detail::letters ||
        (symbol.size() == 2 && second == elements_detail::letters))
        return 0;
    return elements_detail::numbers[first][second];
}

/// The van der Waals radius in Å: of main-group elements by Mantina et al., J. Phys. Chem. A 113,
/// 5806 (2009), which completes and corrects the table of Bondi, J. Phys. Chem. 68, 441 (1964); of
/// transition metals and uranium by Bondi. Where neither has one, and for 0, it is 2 Å.
inline float vanDerWaalsRadius(std::uint8_t number) {
    return number < elements_detail::elements.size() ? elements_detail::elements[number].radius
                                                     : elements_detail::unknownRadius;
}
