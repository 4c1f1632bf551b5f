// The bonds of saved entries: a file brings them back, unless saving it has said that it does not.
#pragma once

#include "Compound.h"

#include <QStringList>

#include <string>
#include <unordered_map>
#include <vector>

namespace random_use {

class SavedBonds {
public:
    /// Keeps the bonds of what was saved whole as a file; `lines` are what saving has said.
    /// Entries that mix atoms with and without letters under one name are left out.
    void saved(const std::string& file, const std::vector<TAVIK::Compound*>& entries,
               const std::vector<std::string>& lines);
    /// What was saved as a file is not known any more, or was a part only.
    void forget(const std::string& file) { m_files.erase(file); }
    /// What differs where that file is opened.
    QStringList differenceFrom(const std::string& file,
                               const std::vector<TAVIK::Compound*>& opened) const;

private:
    std::unordered_map<std::string, std::vector<std::string>> m_files;
};

} // namespace random_use
