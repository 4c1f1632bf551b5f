#include "Elements.h"

#include "Fields.h"

#include <gemmi/elem.hpp>

#include <algorithm>
#include <array>

namespace memory_host {

namespace {

static_assert(elementCount == static_cast<std::size_t>(gemmi::El::END));

gemmi::El el(Element element) {
    return static_cast<gemmi::El>(element);
}

// In a polymer a name that could be a metal's is a position, in whatever columns it is: "CA" is the
// alpha carbon, "HG" a hydrogen.
Element ofLetters(std::string_view letters, bool inPolymer) {
    const Element element = elementOf(letters);
    const bool usual =
        element == elementOf("Se") || element == elementOf("Cl") || element == elementOf("Br");
    if (letters.size() < 2 || letters[1] == ' ' || (element != unknownElement && !inPolymer) ||
        (element != unknownElement && usual))
        return element;
    return elementOf(letters.substr(letters.front() == ' ' ? 1 : 0, 1));
}

// In names as "CD" and "HE1" the second letter is a place in the molecule. No element whose symbol
// begins with H is likely in one.
bool hasPlace(std::string_view name) {
    constexpr std::string_view organic = "CNOPS";
    constexpr std::string_view places = "ABGDEZH";
    return name.size() > 1 && (name[0] == 'H' || (organic.find(name[0]) != std::string_view::npos &&
                                                  places.find(name[1]) != std::string_view::npos));
}

struct Ion {
    std::string_view name;
    std::string_view symbol;
};
// Ions whose names in force fields are not their symbols.
constexpr std::array<Ion, 9> namedIons = {{{"SOD", "Na"},
                                           {"CLA", "Cl"},
                                           {"POT", "K"},
                                           {"CAL", "Ca"},
                                           {"CES", "Cs"},
                                           {"LIT", "Li"},
                                           {"RUB", "Rb"},
                                           {"BAR", "Ba"},
                                           {"CAD", "Cd"}}};

} // namespace

Element elementOf(std::string_view symbol) {
    if (!symbol.empty() && symbol.front() == ' ')
        symbol.remove_prefix(1);
    // What follows the letters may be a charge.
    std::array<char, 3> text{};
    for (std::size_t i = 0; i != 2 && i != symbol.size() && isLetter(symbol[i]); ++i)
        text[i] = symbol[i];
    return static_cast<Element>(gemmi::find_element(text.data()));
}

Element elementOfPdbName(std::string_view columns, bool inPolymer) {
    if (columns.size() < 2)
        return elementOfName(columns, inPolymer);
    if (columns[0] == ' ')
        return elementOf(columns.substr(1, 1));
    const bool isFull = columns.size() > 3 && columns[3] != ' ';
    if (isFull && (columns[0] == 'H' || columns[0] == 'h'))
        return elementOf("H");
    if (isDigit(columns[0]))
        return elementOf(columns.substr(1, 1));
    if (isDigit(columns[1]))
        return elementOf(columns.substr(0, 1));
    return ofLetters(columns.substr(0, 2), inPolymer || (isFull && hasPlace(columns)));
}

Element elementOfName(std::string_view name, bool inPolymer) {
    while (!name.empty() && !isLetter(name.front()))
        name.remove_prefix(1);
    if (name.size() > 1 && !isLetter(name[1]))
        name = name.substr(0, 1);
    return ofLetters(name.substr(0, 2), inPolymer);
}

Element elementOfLeftName(std::string_view name, bool inPolymer) {
    return elementOfName(name, inPolymer || hasPlace(name));
}

bool isLeftName(std::string_view columns) {
    return columns.size() == 4 && isLetter(columns[0]) && !isLetter(columns[1]) &&
           columns[3] == ' ' && elementOf(columns.substr(0, 1)) != unknownElement;
}

Element elementOfIon(std::string_view name, std::string_view residue) {
    if (name != residue)
        return unknownElement;
    const auto letters =
        static_cast<std::size_t>(std::ranges::find_if_not(name, isLetter) - name.begin());
    if (letters <= 2)
        return elementOf(name);
    const auto ion = std::ranges::find(namedIons, name, &Ion::name);
    return ion == namedIons.end() ? unknownElement : elementOf(ion->symbol);
}

const char* elementSymbol(Element element) {
    return gemmi::element_name(el(element));
}

float covalentRadius(Element element) {
    return gemmi::covalent_radius(el(element));
}

bool isHydrogen(Element element) {
    return gemmi::is_hydrogen(el(element));
}

bool isMetal(Element element) {
    return gemmi::is_metal(el(element));
}

bool isMetalLigand(Element element) {
    return el(element) == gemmi::El::N || el(element) == gemmi::El::O ||
           el(element) == gemmi::El::S;
}

bool isCarbonOrPhosphorus(Element element) {
    return el(element) == gemmi::El::C || el(element) == gemmi::El::P;
}

} // namespace memory_host
