// Interned names of items: a structure repeats a few thousand names a million times.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace memory_host {

/// An interned name with a reference count: equal names share one text, which is freed with the
/// last of them. For the GUI thread only.
class Name {
public:
    /// The empty name.
    Name() = default;
    /// Throws std::bad_alloc.
    explicit Name(std::string_view text);
    /// The text as a component of a qualified name: "/" and control characters become "_".
    static Name component(std::string_view text);
    Name(Name&& other) noexcept : m_number(std::exchange(other.m_number, 0)) {}
    Name& operator=(Name&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Name() {
        if (m_number)
            giveBack(m_number);
    }

    const std::string& text() const;
    bool isEmpty() const { return m_number == 0; }
    /// Equal names have equal numbers. Numbers are small; the empty name has 0.
    std::uint32_t number() const { return m_number; }

private:
    static void giveBack(std::uint32_t number) noexcept;

    std::uint32_t m_number = 0;
};

/// Number of distinct names in use, including the empty one.
HOST_EXPORT std::size_t nameCount();

} // namespace memory_host
