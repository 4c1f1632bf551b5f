// One step of a random session, as a plain struct that can be printed and played again. What a step
// works on is a number modulo how many there are: a step stays meaningful when others are left out.
#pragma once

#include "PlainItems.h"

#include <QString>
#include <Qt>

#include <array>
#include <iterator>
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
    SetAtom,  ///< value: its new type, place, model
    Model,    ///< value: first, previous, next
    Highlight, ///< switches the host's showing of the selection; needs no guard
    Look,      ///< has the window painted, and all events handled
    Command,   ///< calls a slot of the window; value: which
    Entry,     ///< presses an entry of the window's list with the left button; value: which
    Kill,      ///< sends the plug-in "Kill"
    Throw      ///< answering: an exception leaves the handler
};
constexpr int editCount = static_cast<int>(EditKind::Throw) + 1;

struct Edit {
    EditKind kind = EditKind::None;
    unsigned int target = 0;
    unsigned int value = 0;
};

enum class Action {
    Idle,        ///< lets the screen be painted
    Slot,        ///< a: which slot; target: its entry, row or index; b: its mouse button
    Menu,        ///< a: which entry of the menus
    Press,       ///< target: the row; a: button; b: place in the row; c: modifiers
    PressBelow,  ///< a: button; c: modifiers
    Move,        ///< with the left button held; target: the row, or below the rows
    Release,     ///< target: as for Move
    DoubleClick, ///< target: the row
    Open,        ///< presses the mark of one closed row after the other
    Key,         ///< a, b: which key of the tree; c: modifiers
    Type,        ///< in the tree; a: which letter
    Header,      ///< a: column
    PressEntry,  ///< in the list; target: the entry, or below all; a: button
    ListKey,     ///< a, b: which key
    Field,       ///< a: which field of the panel; text: what is typed into it
    TreeOnly,    ///< switches the panel's box
    Button,      ///< of the panel; a: which
    Call,        ///< a: entry point of the plug-in; b: which command
    Window,      ///< a: hidden, minimised, closed, its panel closed; whether shown or not
    Lock,        ///< the host refuses changes from now on, or no longer
    Outside,     ///< edit: done by others now
    Answering,   ///< edit: done by another subscriber when it is told the next time
    Build,       ///< others add a structure; a: which
    Load,        ///< a: which file; one of them is refused
    Sabotage,    ///< selects an item behind everyone's back: a comparison must notice
    Crash        ///< ends the program, which must be noticed, too
};
constexpr int actionCount = static_cast<int>(Action::Crash) + 1;

enum class Answer { Accept, Cancel };

struct Step {
    Action action = Action::Idle;
    unsigned int target = 0;
    unsigned int a = 0;
    unsigned int b = 0;
    unsigned int c = 0;
    Answer answer = Answer::Accept;
    std::string text = {}; ///< UTF-8
    Edit edit = {};        ///< see Action; of a step with a question: done while it is open
};

/// What a session begins with.
struct Start {
    enum Kind { Generated, Sample, Ubiquitin, Crambin, Crabp, Empty };

    Kind kind = Generated;
    unsigned int seed = 1; ///< of what is generated
    bool plugins = false;  ///< whether those are there that surfaces are asked of
};

struct Session {
    Start start;
    std::vector<Step> steps;
};

/// A step, and a whole session, as C++ writes them.
QString text(const Step& step);
QString text(const Session& session);

// The choices that the numbers of a step mean, for the model and for the real window alike.

template <class Choice, std::size_t count>
const Choice& choose(const Choice (&choices)[count], unsigned int number) {
    return choices[number % count];
}
template <class Choice>
const Choice& choose(const std::vector<Choice>& choices, unsigned int number) {
    return choices[number % choices.size()];
}

inline constexpr Qt::MouseButton buttons[] = {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton};
inline constexpr Qt::MouseButton listButtons[] = {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton,
                                                  Qt::LeftButton, Qt::RightButton, Qt::MiddleButton,
                                                  Qt::BackButton};
inline const Qt::KeyboardModifiers modifiers[] = {
    {}, {}, Qt::ShiftModifier, Qt::ControlModifier, Qt::ShiftModifier | Qt::ControlModifier};
inline constexpr Qt::Key treeKeys[] = {
    Qt::Key_Up,    Qt::Key_Down,   Qt::Key_Down,   Qt::Key_Home,     Qt::Key_End,  Qt::Key_Left,
    Qt::Key_Right, Qt::Key_Plus,   Qt::Key_Minus,  Qt::Key_Space,    Qt::Key_Down, Qt::Key_Right,
    Qt::Key_A,     Qt::Key_F,      Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_P,    Qt::Key_N,
    Qt::Key_F1,    Qt::Key_Delete, Qt::Key_Return};
inline constexpr Qt::Key letterKeys[] = {Qt::Key_A, Qt::Key_C, Qt::Key_M,       Qt::Key_1,
                                         Qt::Key_H, Qt::Key_G, Qt::Key_Asterisk};
inline constexpr Qt::Key listKeys[] = {Qt::Key_Up,  Qt::Key_Down, Qt::Key_Home,
                                       Qt::Key_End, Qt::Key_Down, Qt::Key_F,
                                       Qt::Key_P,   Qt::Key_N,    Qt::Key_F1};
// Those that came later do not change what older sessions mean.
inline constexpr Qt::Key moreTreeKeys[] = {Qt::Key_Menu, Qt::Key_Space};
inline constexpr Qt::Key moreListKeys[] = {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Menu};
inline Qt::Key treeKey(const Step& step) {
    return step.b % 8 == 7 ? choose(moreTreeKeys, step.a) : choose(treeKeys, step.a);
}
inline Qt::Key listKey(const Step& step) {
    return step.b % 4 == 3 ? choose(moreListKeys, step.a) : choose(listKeys, step.a);
}
inline constexpr const char* pluginCommands[] = {"Show", "Kill", "show", "", "Show"};
inline constexpr const char* madeTypes[] = {"C", "N", "O", "H", "Cu", "X"};
inline constexpr const char* madeNames[] = {"CA", "N", "O1", "H/1", "CU", "CB'", "C\xE9"};

/// The slots of the window that others call when they are told of a change; what one asks is
/// answered as the step says.
inline constexpr const char* calledSlots[] = {
    "SelectedColor()",  "SelectedColor()", "SelectedUnColor()",   "SelectedColorTemp()",
    "SelectedShow()",   "SelectedHide()",  "SelectedClear()",     "SelectedToggle()",
    "SelectGroups()",   "SelectGroupsG()", "SelectedNextModel()", "SelectGridBounds()",
    "UnselectedHide()", "KillAtoms()",     "KillResidues()",      "KillBonds()",
    "KillClump()",      "KillAll()",       "MakeCartesian()",     "SelectionChanged()"};

/// What others give an atom that they make or change.
AtomValues madeAtom(unsigned int value);

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

/// How many rows a step opens at most.
constexpr int openedAtOnce = 40;

/// Where in a row the mouse is pressed: a column, right of all columns, the indentation, or where
/// one ends and the next begins: the first and last point of the branch mark, and of the name.
enum Place {
    Object,
    Show,
    Select,
    Partial,
    RightOfAll,
    Indentation,
    MarkBegin,
    MarkEnd,
    NameMargin,
    NameBegin
};
inline constexpr Place places[] = {Object,    Show,    Select,     Partial,  RightOfAll,
                                   Object,    Show,    Select,     Partial,  Indentation,
                                   MarkBegin, MarkEnd, NameMargin, NameBegin};
/// What the messages of an exception out of a handler say.
inline constexpr const char* complaint = "the other subscriber cannot take this";

} // namespace plain
