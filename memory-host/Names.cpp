#include "Names.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

namespace memory_host {

namespace {

struct NameTable {
    std::deque<std::string> texts{std::string()};
    std::unordered_map<std::string_view, std::uint32_t> numbers{{texts.front(), 0}};
};

NameTable& table() {
    // Never destroyed: items may outlive every static object.
    static auto* const names = new NameTable;
    return *names;
}

bool cannotStandInComponent(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return c == '/' || byte < 0x20 || byte == 0x7f;
}

} // namespace

std::uint32_t internName(std::string_view name) {
    NameTable& names = table();
    if (const auto found = names.numbers.find(name); found != names.numbers.end())
        return found->second;
    const auto number = static_cast<std::uint32_t>(names.texts.size());
    names.texts.emplace_back(name);
    try {
        names.numbers.emplace(names.texts.back(), number);
    } catch (...) {
        names.texts.pop_back();
        throw;
    }
    return number;
}

const std::string& nameText(std::uint32_t number) {
    return table().texts[number];
}

std::string asComponent(std::string_view name) {
    std::string component(name);
    std::replace_if(component.begin(), component.end(), cannotStandInComponent, '_');
    return component;
}

std::uint32_t internComponent(std::string_view name) {
    // Names of atoms are nearly always fit to be used as they stand.
    return std::any_of(name.begin(), name.end(), cannotStandInComponent)
               ? internName(asComponent(name))
               : internName(name);
}

} // namespace memory_host
