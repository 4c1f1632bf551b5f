// The window, the frame around it and who hears of changes, as plain structs: what each step of a
// session must do to data, rows, list and logs.
#pragma once

#include "Meaning.h"
#include "PlainFiles.h"
#include "PlainHistory.h"
#include "PlainItems.h"
#include "PlainTree.h"
#include "Step.h"

#include <QStringList>

#include <array>
#include <functional>
#include <vector>

namespace plain {

/// What is written, told and asked while a step is done.
struct Said {
    QStringList messages; ///< debug and warning lines
    QStringList log;      ///< lines of the host's log
    QStringList told;     ///< what another subscriber hears, in order
    QStringList asked;    ///< the dialogs that opened, with their texts
};

/// What only the screen can tell before a step: where the keys of the list start from, and which
/// rows of the tree are on it, counted as shown.
struct Seen {
    int listRow = -1; ///< the list's current row
    int first = -1;
    int last = -1;  ///< -1: the rows end above the lower edge
    int atOnce = 0; ///< how many rows the screen holds
    bool hasRoomBelow = true;
    bool currentIsOnScreen = true; ///< the tree's current row, when a drag moves
};

enum class Change { Update, Add, Delete };
enum class Who { Nobody, Window, Other };
enum class Refusal { Report, Silent };

class Model {
public:
    /// Does a step. Those that open files and build structures are entered by whoever did it.
    void act(const Step& step, const Meaning& meaning, const Seen& seen);
    /// Others open a file or build a structure, which `enter` enters here; nobody answers.
    void open(const std::function<void()>& enter);
    /// Goes back or forth in the history, which is refused while a change or dialog is open.
    void travel(const Edit& edit);
    /// Whether a user can reach the window now.
    bool isUsable() const { return exists && shown && !minimised; }
    /// What the plug-in's IsDone answers.
    bool isDone() const { return !exists || (!shown && !minimised); }

    Host host;
    Past past;
    Files files;
    bool changing = false;
    bool locked = false;
    bool showSelection = true;
    bool plugins = false; ///< whether those are loaded that surfaces are asked of
    int deletions = 0;    ///< how often something was destroyed
    int dialogs = 0;      ///< how often one was opened
    Edit answering;       ///< what the other subscriber does when it is told the next time

    // The window, while it exists.
    bool exists = false;
    bool shown = false;
    bool minimised = false;
    Tree tree;
    QStringList list;
    bool stale = false;         ///< others have destroyed items, and the list was not made since
    int current = -1;           ///< index of the item in the tree, as a press on the list set it
    unsigned int currentId = 0; ///< of the item that had that index
    int highlighted = -1;       ///< entry of the list
    bool panelShown = false;
    std::array<QString, 3> fields;
    bool treeOnly = true;

    Said said;
    int at = -1; ///< of the step that is done: see Meaning

    // What the commands are made of.

    Item* root() const { return tree.top() ? tree.top()->item : nullptr; }
    const Items& topLevel() { return host.space()->children; }
    bool isTopLevel(unsigned int id) { return indexOf(id) >= 0; }
    /// A change by the window: nothing happens without an `item`; a refused one is reported.
    void change(Item* item, Change kind, const std::function<void()>& apply,
                Refusal refusal = Refusal::Report);
    /// Opens a dialog, in which others do what the step says. Whether it is accepted, and the
    /// window still there.
    bool ask(const QString& dialog, const Step& step);
    void say(const char* line) { said.messages << QString::fromLatin1(line); }
    void commUpdate();
    void commAdd();
    void commDelete();
    void makeList();
    void updateList();
    void listEvent(Qt::MouseButton button, int index, const Step& step);
    void populate(int index);
    void selectionChanged();
    void killBranch(Item* item, const Step& step);
    Item* renewList(unsigned int shownId);
    /// The index of a top-level item; -1 if there is none of that identifier.
    int indexOf(unsigned int id);
    void killSelected(Kind kind);
    void close();

private:
    Step m_step;                  ///< the one that is done
    std::vector<Change> m_untold; ///< what the window has not heard of yet, outermost first

    int m_tellings = 0; ///< notifications that are under way
    int m_open = 0;     ///< dialogs and menus

    /// Others do what the step says while a dialog or menu is open.
    void save(const Step& step);
    void saveAs(const Items& entries, const std::string& name, SaveChoice choice, const Step& step);
    void editBehind(const Step& step);
    bool guarded(Who who, Change kind, const std::function<void()>& apply);
    void tell(Who who, Change kind);
    void tellWindow(Change kind);
    void edit(Who who, const Edit& edit);
    void destroyBeforeAll(Item* item);
    void changeItem(Item& item, const Edit& edit);
    void addItem(const Edited<Item>& edited, const Edit& edit);
    void addLeaf(Item* parent, const Edit& edit);
    QString entryText(const Item& item) const;
    void create();
    void kill();
    void call(const QString& entryPoint, const QString& name);
    void actInWindow(const Step& step, const Meaning& meaning, const Seen& seen);
    void press(Row* row, const Step& step);
    void rightPress(Row* row, const Step& step);
    void itemMenu(Item* item, const Step& step);
    void doubleClick(Row* row);
    void openRows();
    void key(const Step& step, const Seen& seen);
    void drag(Row* to, const Seen& seen);
    void listKey(const Step& step, const Seen& seen);
    void tellIf(bool selectionChanges);
    void shortcut(Qt::Key key, const Step& step);
};

} // namespace plain
