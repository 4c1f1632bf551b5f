// Names of items, kept once each: a structure repeats a few thousand names a million times.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace memory_host {

/// The number of a name; equal names have equal numbers. 0 is the empty name.
std::uint32_t internName(std::string_view name);
/// The number of the name as a component of a qualified name.
std::uint32_t internComponent(std::string_view name);
/// The name of a number that internName() gave.
const std::string& nameText(std::uint32_t number);
/// The name as a component of a qualified name: "/" and control characters are replaced by "_".
std::string asComponent(std::string_view name);

} // namespace memory_host
