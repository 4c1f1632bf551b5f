// What a step means at the moment when it is done: found once, for the model and the real window.
#pragma once

#include "PlainCommands.h"
#include "PlainMenus.h"
#include "Step.h"

namespace plain {

/// The commands and menu entries that a step can name.
struct Tables {
    const std::vector<Command>& commands = plain::commands();
    const std::vector<MenuEntry>& entries = menuEntries();
};

struct Meaning {
    const Command* command = nullptr;
    const MenuEntry* entry = nullptr;
    int field = -1;  ///< of the panel
    int button = -1; ///< of the panel
    /// The row, entry or index; -1: none, or below all. Rows are counted as they are shown, those
    /// of KillBranch all.
    int at = -1;
};

/// The model shows, before the step, what the window shows.
Meaning meaningOf(const Step& step, Model& model, const Tables& tables = {});
/// What a step names that is not there, for people; empty when it can be done.
QString unknownName(const Step& step, const Tables& tables = {});

} // namespace plain
