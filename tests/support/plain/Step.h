// One step of a random session, as a plain struct that can be printed and played again. It names
// the command, gesture or key, so that it means the same when there are more of them. What it works
// on is a number, counted round among as many as there are: a step stays meaningful when others are
// left out.
#pragma once

#include "Edit.h"

#include <QString>
#include <Qt>

#include <string>
#include <vector>

namespace plain {

enum class Action {
    Idle,        ///< lets the screen be painted
    Slot,        ///< name: the slot; target: its entry, row or index; button: that of ListEvent
    Menu,        ///< name: "Menu > Label"
    Press,       ///< target: the row; button, place, modifiers
    PressBelow,  ///< below all rows; button, modifiers
    Move,        ///< with the left button held; target: the row, or below the rows
    Release,     ///< target: as for Move
    DoubleClick, ///< target: the row; place
    Open,        ///< presses the mark of one closed row after the other
    Key,         ///< in the tree; key, modifiers
    Type,        ///< in the tree; key: a letter or digit
    Header,      ///< place: the column
    PressEntry,  ///< in the list; target: the entry, or below all; button
    ListKey,     ///< key
    Field,       ///< name: the field of the panel; text: what is typed into it
    TreeOnly,    ///< switches the panel's box
    Button,      ///< of the panel; name: how its label begins
    Command,     ///< the plug-in's entry points; name: the command
    CommandC,
    Execute0,
    Cleanup,
    Hide, ///< the window, whether shown or not
    Minimise,
    Close,
    ClosePanel,
    Lock,      ///< the host refuses changes from now on, or no longer
    Outside,   ///< edit: done by others now
    Answering, ///< edit: done by another subscriber when it is told the next time
    Build,     ///< others add a structure; value: which
    Load,      ///< name: the file, which may have been saved before; one of them is refused
    Save,      ///< target: the entry; value: what of it; name: the file, where one is asked for
    Sabotage,  ///< selects an item behind everyone's back: a comparison must notice
    Crash      ///< ends the program, which must be noticed, too
};
constexpr int actionCount = static_cast<int>(Action::Crash) + 1;

/// Where in a row the mouse is pressed: a column, right of all columns, the indentation, or where
/// one ends and the next begins: the first and last point of the branch mark, and of the name.
enum class Place {
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
constexpr int placeCount = static_cast<int>(Place::NameBegin) + 1;

enum class Answer { Accept, Cancel };

struct Step {
    Action action = Action::Idle;
    std::string name = {};
    unsigned int target = 0;
    Qt::MouseButton button = Qt::LeftButton;
    Place place = Place::Object;
    Qt::Key key = Qt::Key_unknown;
    Qt::KeyboardModifiers modifiers = {};
    unsigned int value = 0; ///< see Action; else the colour that is chosen, the entry of a menu
    Answer answer = Answer::Accept;
    std::string text = {}; ///< UTF-8; what is typed into a dialog
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

/// What the panel holds, and the slots behind its buttons; the last one closes it.
inline constexpr const char* fieldNames[] = {"Chain", "Residue", "Atom"};
struct PanelButton {
    const char* name;
    const char* slot;
};
inline constexpr PanelButton panelButtons[] = {{"Union", "applySelect()"},
                                               {"Intersection", "applyMask()"},
                                               {"Difference", "applyDiff()"},
                                               {"Close", nullptr}};

/// How many rows a step opens at most.
constexpr int openedAtOnce = 40;

/// What is saved: the entry's file, or the entry as another file, what is shown of it, the
/// selection of all entries, or each file with changes.
enum class Saving { File, FileAs, ShownAs, SelectionAs, All };
inline Saving savingOf(const Step& step) {
    return static_cast<Saving>(step.value % 5);
}
inline std::uint32_t chosenColor(const Step& step) {
    return 0x80000000U | step.value;
}
/// Which entry of an item's menu is chosen: 0 to 2.
inline int chosenEntry(const Step& step) {
    return static_cast<int>(step.value % 3);
}

} // namespace plain
