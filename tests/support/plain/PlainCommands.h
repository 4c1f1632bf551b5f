// The slots of the window: what is known of each, and what it does. Whatever tests go through all
// commands take them from here.
#pragma once

#include <string_view>
#include <vector>

namespace plain {

class Model;
struct Step;

/// What a slot needs to do anything.
enum class Needs { Nothing, ShownItem, Entry };
/// What becomes of its change when the host refuses it.
enum class Guard { None, Reported, Silent };
/// When it opens a dialog.
enum class Asks { No, First, InGuard };

struct Command {
    const char* slot; ///< as the meta-object writes it
    Needs needs = Needs::Nothing;
    Guard guard = Guard::None; ///< none: it changes no data itself
    Asks asks = Asks::No;
    const char* line = nullptr;    ///< written at the start
    const char* sendsTo = nullptr; ///< "Type/Name" of the plug-in that does the work
    bool oddIsCancel = false;      ///< an odd answer ends it as a cancel does
    bool refreshes = true;         ///< the window shows the change at once
    bool isStep = false;           ///< other commands are made of it: exceptions pass through
    bool isPrivate = false;
    /// How often it tells the tree to repaint, with an item shown that is wholly selected; a dialog
    /// is accepted.
    int repaints = 1;
    void (*run)(Model& model, const Step& step);
};

/// In the order of the meta-object.
const std::vector<Command>& commands();
/// The command of that slot; null when there is none.
const Command* findCommand(const std::vector<Command>& among, std::string_view slot);
/// Does what a slot does, close() included.
void runCommand(Model& model, std::string_view slot, const Step& step);

} // namespace plain
