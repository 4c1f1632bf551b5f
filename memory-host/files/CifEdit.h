// Changes to the text of a CIF: everything that no change names stays byte for byte as it was.
#pragma once

#include "CifText.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host::cif {

/// A value as it is written in a CIF: with quotes where it needs them, "?" for an empty one.
HOST_EXPORT std::string written(std::string_view value);

/// A new value of a row.
struct Change {
    std::size_t column;
    std::string value; ///< as it is written
};

/// Copies a text from front to back with changes, each behind those before it.
class HOST_EXPORT Edit {
public:
    explicit Edit(std::string_view text) : m_text(text) {}

    std::string_view text() const { return m_text; }
    void replace(const Place& place, std::string_view by);
    /// Replaces a value by another one, as it is written. The values behind it stay where they are
    /// if there are blanks enough.
    void setValue(const Place& place, std::string_view value);
    /// Replaces values of a row, in any order of columns.
    void setValues(std::span<const Place> row, std::span<const Change> changes);
    /// Removes a row, and its line if nothing else stands there.
    void dropRow(std::span<const Place> row);
    /// Removes a loop.
    void dropLoop(const Category& loop);
    /// Removes one of the tags of a category without a loop, and its value.
    void dropPair(const Category::Pair& pair);
    /// Removes one of the empty comments before and behind a category that was removed.
    void dropSeparator(const Category& category);
    /// Adds a row of a loop behind another one of it: a copy of `pattern` with changes.
    void addRow(std::span<const Place> behind, std::span<const Place> pattern,
                std::span<const Change> changes);
    /// Puts a loop into the place of the first tag and value of a category that has none. Its rows
    /// are copies of the only one with changes. The other pairs are to be dropped.
    void makeLoop(const Category& category, std::span<const std::vector<Change>> rows);

    /// The new text.
    std::string take();

private:
    std::string joined(std::span<const Place> row, std::span<const Change> changes) const;
    std::string copyOf(std::span<const Place> row, std::span<const Change> changes) const;

    std::string_view m_text;
    std::string m_new;
    std::size_t m_copied = 0; ///< where in the old text the copy ends
};

} // namespace memory_host::cif
