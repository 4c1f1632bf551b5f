// Colour maps: from a number to a colour.
#pragma once

#include "Color.h"
#include "HostExport.h"

#include <memory>
#include <string>

/// A colour map read from a file of the host's data folder, over a range that can be set.
class HOST_EXPORT Colormap {
public:
    /// Reads `file` and divides it into `entries` colours; `name` is a label only. A file that
    /// cannot be read is an error in the log, and isValid() is false.
    Colormap(const std::string& file, int entries, const std::string& name);
    ~Colormap();

    /// The values that the first and the last entry stand for; 0 and 1 at first.
    void setMinMax(float min, float max);
    /// The colour of `value`. Values outside the range take the end colours, what is not a number
    /// the first one; a map that is not valid gives white.
    Color lookupValue(float value) const;
    /// Whether the file was read.
    bool isValid() const;

private:
    struct Table;
    std::unique_ptr<Table> m_table; ///< the host's own
};
