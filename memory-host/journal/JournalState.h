// What was gathered for a journal.
#pragma once

#include "Gathering.h"
#include "JournalSections.h"
#include "files/SourceText.h"

#include <memory>
#include <string>
#include <vector>

namespace memory_host {

struct JournalState {
    /// A file beside the journal, which is not written yet: bytes, or the text of a file.
    struct Beside {
        std::string name;
        JournalBytes bytes;
        std::shared_ptr<const SourceText> text;
        std::string textName; ///< of the text's file, which stands in a folder
    };

    JournalSections sections;
    std::vector<Beside> besides;
    std::set<std::string> needed; ///< all files beside it, those that are written, too
    bool isAsRead = true;         ///< reading the files gives all there is

    JournalBytes& at(JournalSection section) { return sections[static_cast<std::size_t>(section)]; }
};

} // namespace memory_host
