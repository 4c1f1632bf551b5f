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

    /// Sets the values of the first and the last entry; initially 0 and 1.
    void setMinMax(float min, float max);
    /// The colour of `value`. Values outside the range take the end colours, NaN takes the first;
    /// an invalid map gives white.
    Color lookupValue(float value) const;
    /// Whether the file was read.
    bool isValid() const;

private:
    struct Table;
    std::unique_ptr<Table> m_table; ///< the host's own
};
