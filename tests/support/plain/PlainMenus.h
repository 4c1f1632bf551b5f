// The menus of the window: the one statement of their entries. Whatever tests go through the menus
// take them from here.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace plain {

struct MenuEntry {
    const char* menu;
    const char* label;
    const char* slot; ///< as the meta-object writes it
    const char* key = "";
    const char* plugin = ""; ///< "Type/Name" of the one without which the entry is not there
};

/// In the order of the menu bar.
const std::vector<MenuEntry>& menuEntries();
/// "Menu > Label", as sessions name an entry.
std::string nameOf(const MenuEntry& entry);
/// The entry of that name; null when there is none.
const MenuEntry* findEntry(const std::vector<MenuEntry>& among, std::string_view name);

} // namespace plain
