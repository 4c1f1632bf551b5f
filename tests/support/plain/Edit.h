// What others do to the data in a step of a random session, and what its numbers mean: for the
// model and for the real data space alike.
#pragma once

#include "PlainItems.h"

#include <string>
#include <vector>

namespace plain {

/// What others may do to the data, at once or in between.
enum class EditKind {
    None,
    Select,   ///< value: on or off
    Show,     ///< value: on or off
    Paint,    ///< value: the colour
    AddAtom,  ///< value: name, model and place
    AddBond,  ///< value: the second atom, and whether it stands in the space itself
    AddLeaf,  ///< value: which kind
    AddBox,   ///< an empty composite; value: which kind
    AddSet,   ///< value: how many members, and which; of top-level items only for some values
    AddTop,   ///< a top-level item; value: which kind
    Destroy,  ///< value: 0 to 3 a top-level item, else any
    Swap,     ///< one change destroys a top-level item and makes another
    AddAmong, ///< one change adds an atom and selects or unselects the item; value: as AddAtom, and
              ///< whether the atom stands in the space itself
    SetAtom,  ///< value: its new type, place, model; of an atom of a file place and model alone
    Model,    ///< value: first, previous, next
    Highlight, ///< switches the host's showing of the selection; needs no guard
    Look,      ///< has the window painted, and all events handled
    Command,   ///< calls a slot of the window, which needs no argument; name: which
    Entry,     ///< presses an entry of the window's list with the left button; value: which
    Undo,      ///< value: how many changes, see changesOf()
    Redo,
    UndoData, ///< takes back the last change that does more than to select, and what came since
    Kill,     ///< sends the plug-in "Kill"
    Throw     ///< answering: an exception leaves the handler
};
constexpr int editCount = static_cast<int>(EditKind::Throw) + 1;

struct Edit {
    EditKind kind = EditKind::None;
    unsigned int target = 0; ///< the item, counted round
    unsigned int value = 0;
    std::string name = {};
};

template <class Choice, std::size_t count>
const Choice& choose(const Choice (&choices)[count], unsigned int number) {
    return choices[number % count];
}
template <class Choice>
const Choice& choose(const std::vector<Choice>& choices, unsigned int number) {
    return choices[number % choices.size()];
}
/// A number counted round; -1 when there is nothing to count.
inline int countedRound(unsigned int number, std::size_t count) {
    return count == 0 ? -1 : static_cast<int>(number % count);
}

/// The items that an edit is about, found among all, each before what it holds, and the top-level
/// ones. `Compound` is that of the model or of the host.
template <class Compound> struct Edited {
    Edited(const Edit& edit, const std::vector<Compound*>& all,
           const std::vector<Compound*>& topLevel) {
        const auto pick = [](const std::vector<Compound*>& from, unsigned int number) {
            return from.empty() ? nullptr : choose(from, number);
        };
        const bool topOnly =
            edit.kind == EditKind::Swap || (edit.kind == EditKind::Destroy && edit.value < 4);
        item = pick(topOnly ? topLevel : all, edit.target);
        second = pick(all, edit.value);
        const std::vector<Compound*>& listed = edit.value % 6 ? all : topLevel;
        if (edit.kind == EditKind::AddSet && !listed.empty())
            for (unsigned int i = 0; i != edit.value % 4; ++i)
                members.push_back(pick(listed, edit.target + i * edit.value));
    }

    Compound* item = nullptr;
    Compound* second = nullptr;       ///< of a bond
    std::vector<Compound*> members{}; ///< of a set
};

/// Whether what an edit adds stands in the space itself, not in the item or around it.
bool addsToSpace(const Edit& edit);
/// The kind of what an edit adds, if it can stand there.
Kind addedKind(const Edit& edit);
/// The number that a leaf is made by.
unsigned int leafValue(const Edit& edit);
bool turnsOn(const Edit& edit);
std::uint32_t paintedColor(const Edit& edit);
Host::Switch modelSwitch(const Edit& edit);

/// Whether an edit goes back or forth in the history.
bool isTravel(const Edit& edit);
/// How many changes are taken back or done again, where there are `count`.
std::size_t changesOf(const Edit& edit, std::size_t count);
/// A value that stands for all changes.
constexpr unsigned int changesOfAll = 15;

/// What others give an atom that they make or change.
AtomValues madeAtom(unsigned int value);
const char* madeName(unsigned int value);

/// A grid that others make, for some values above all atoms. No coordinate with three decimals lies
/// in the middle of two points.
struct GridValues {
    explicit GridValues(unsigned int value)
        : points{3 + static_cast<int>(value % 5), 4, 9}, origin{-3.0517, -3.0517,
                                                                value % 3 == 0 ? 10.9483 : 0.9483} {
    }

    std::array<int, 3> points;
    std::array<double, 3> origin;
    std::array<double, 3> step{1.7321, 1.7321, 1.7321};
};

/// What the message of an exception out of a handler says.
inline constexpr const char* complaint = "the other subscriber cannot take this";

} // namespace plain
