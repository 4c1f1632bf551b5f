// What the steps of a session do in the plain model: calls, gestures with mouse and keys.
#include "PlainWindow.h"

#include <algorithm>

namespace plain {

void Model::act(const Step& step, const Meaning& meaning, const Seen& seen) {
    m_step = step;
    at = meaning.at;
    switch (step.action) {
    case Action::Slot:
        if (exists)
            runCommand(*this, meaning.command->slot, step);
        return;
    case Action::Menu:
        if (isUsable() && (plugins || !*meaning.entry->plugin))
            runCommand(*this, meaning.entry->slot, step);
        return;
    case Action::Lock:
        locked = !locked;
        return;
    case Action::Outside:
        return edit(Who::Nobody, step.edit);
    case Action::Save:
        return save(step);
    case Action::Answering:
        answering = step.edit;
        return;
    case Action::Command:
        return call(QStringLiteral("Command"), QString::fromStdString(step.name));
    case Action::CommandC:
        return call(QStringLiteral("CommandC"), QString::fromStdString(step.name));
    case Action::Execute0:
        return call(QStringLiteral("CommandC"), QStringLiteral("Show"));
    case Action::Cleanup:
        return call(QStringLiteral("Cleanup"), {});
    default:
        break;
    }
    if (!exists)
        return;
    switch (step.action) {
    case Action::Hide:
        shown = false;
        return;
    case Action::Minimise:
        shown = minimised = true;
        return;
    case Action::Close:
        return close();
    case Action::ClosePanel:
        panelShown = false;
        return;
    default:
        break;
    }
    if (isUsable())
        actInWindow(step, meaning, seen);
}

void Model::actInWindow(const Step& step, const Meaning& meaning, const Seen& seen) {
    const Rows rows = tree.shown();
    // Where the action is on the list, the place is that of an entry, of which there may be more.
    const bool isRow = at >= 0 && std::size_t(at) < rows.size();
    Row* const row = isRow ? rows[std::size_t(at)] : nullptr;
    switch (step.action) {
    case Action::Press:
        return row ? press(row, step) : void();
    case Action::PressBelow:
        return tellIf(tree.pressBelow(step.button, step.modifiers));
    case Action::Move:
        if (!rows.empty() && (row || seen.hasRoomBelow))
            drag(row, seen);
        return;
    case Action::Release:
        if (row || seen.hasRoomBelow)
            tellIf(tree.release(row));
        return;
    case Action::DoubleClick:
        if (row && answering.kind == EditKind::None)
            doubleClick(row);
        return;
    case Action::Open:
        return openRows();
    case Action::Key:
        return key(step, seen);
    case Action::Type:
        return tellIf(tree.type(QChar(ushort(step.key)).toLower()));
    case Action::Header:
        return tree.clickHeader(int(step.place));
    case Action::PressEntry:
        if (at < 0)
            return;
        highlighted = at;
        return listEvent(step.button, at, step);
    case Action::ListKey:
        return listKey(step, seen);
    case Action::Field:
        if (panelShown)
            fields[std::size_t(meaning.field)] = QString::fromStdString(step.text);
        return;
    case Action::TreeOnly:
        if (panelShown)
            treeOnly = !treeOnly;
        return;
    case Action::Button:
        if (!panelShown)
            return;
        if (const char* const slot = panelButtons[meaning.button].slot)
            runCommand(*this, slot, step);
        else
            panelShown = false;
        return;
    default:
        return;
    }
}

void Model::tellIf(bool selectionChanges) {
    if (selectionChanges)
        selectionChanged();
}

void Model::press(Row* row, const Step& step) {
    if (step.button == Qt::LeftButton) {
        const bool onMark = (step.place == Place::Indentation || step.place == Place::MarkBegin ||
                             step.place == Place::MarkEnd) &&
                            row->parent && !row->children.empty();
        if (!onMark)
            return tellIf(tree.press(row, step.modifiers));
        return tree.pressMark(row, step.modifiers);
    }
    tree.pressOther();
    if (step.button == Qt::RightButton)
        rightPress(row, step);
    else if (row != tree.top())
        killBranch(row->item, step);
}

// Of each row crossed is told before the next one; others may have emptied the tree by then.
void Model::drag(Row* to, const Seen& seen) {
    for (Row* row : tree.crossed(to, seen.currentIsOnScreen)) {
        if (tree.drag == Tree::Drag::None)
            return;
        tellIf(tree.dragOver(row));
    }
}

void Model::rightPress(Row* row, const Step& step) {
    Item* const item = row->item;
    tree.current = row;
    std::function<void()> change;
    switch (step.place) {
    case Place::MarkBegin:
    case Place::MarkEnd:
    case Place::NameMargin:
        return;
    case Place::Indentation:
        if (row->parent)
            return;
        [[fallthrough]];
    case Place::NameBegin:
    case Place::Object:
        return itemMenu(item, step);
    case Place::Show:
        change = [item] { Host::setVisible(*item, !Host::isVisible(*item)); };
        break;
    case Place::Select:
        change = [item] { Host::setSelected(*item, !Host::isSelected(*item)); };
        break;
    case Place::Partial:
        change = [item] { Host::setSelected(*item, !Host::hasSelected(*item)); };
        break;
    default:
        return;
    }
    // Nobody is the originator: the window is told like all others.
    if (!guarded(Who::Nobody, Change::Update, change))
        say("Cannot update CDB!");
}

// The host's own menu: show or hide, select or unselect, default colour.
void Model::itemMenu(Item* item, const Step& step) {
    const bool wasVisible = Host::isVisible(*item);
    const bool wasSelected = Host::isSelected(*item);
    const int before = deletions + dialogs;
    said.asked << QStringLiteral("ItemMenu: %1: %2|%3|%4|Default color")
                      .arg(QString::fromStdString(item->kind == Kind::Atom ? item->type
                                                                           : kindName(item->kind)),
                           QString::fromLatin1(item->name),
                           QLatin1String(wasVisible ? "Hide" : "Show"),
                           QLatin1String(wasSelected ? "Unselect" : "Select"));
    editBehind(step);
    // Whatever is destroyed closes the menu, and so does a dialog.
    if (step.answer == Answer::Cancel || deletions + dialogs != before)
        return;
    const int choice = chosenEntry(step);
    const bool granted = guarded(Who::Nobody, Change::Update, [&] {
        if (choice == 0)
            Host::setVisible(*item, !wasVisible);
        else if (choice == 1)
            Host::setSelected(*item, !wasSelected);
        else
            item->color = Host::defaultColor(*item);
    });
    if (!granted)
        say("Cannot update CDB!");
}

void Model::doubleClick(Row* row) {
    tellIf(tree.press(row, {}));
    tellIf(tree.release(row));
    if (row->open || !row->children.empty())
        tree.setOpen(row, !row->open);
}

void Model::openRows() {
    for (int i = 0; i != openedAtOnce; ++i) {
        const Rows rows = tree.shown();
        const auto closed = std::find_if(rows.begin(), rows.end(), [](const Row* row) {
            return row->parent && !row->open && !row->children.empty();
        });
        if (closed == rows.end())
            return;
        tree.pressMark(*closed, {});
    }
}

namespace {

bool isShortcut(Qt::Key key) {
    return key == Qt::Key_F || key == Qt::Key_P || key == Qt::Key_N || key == Qt::Key_F1;
}

} // namespace

void Model::shortcut(Qt::Key key, const Step& step) {
    runCommand(*this,
               key == Qt::Key_F1  ? "help()"
               : key == Qt::Key_F ? "SelectedOrigModel()"
               : key == Qt::Key_P ? "SelectedPrevModel()"
                                  : "SelectedNextModel()",
               step);
}

void Model::key(const Step& step, const Seen& seen) {
    const Qt::Key key = step.key;
    if (key != Qt::Key_F1 && isShortcut(key) && !tree.typed.isEmpty())
        return tellIf(tree.type(QChar(ushort(key)).toLower()));
    if (isShortcut(key))
        return shortcut(key, step);
    if (key == Qt::Key_Menu) {
        tree.key(key, {});
        return tree.current ? itemMenu(tree.current->item, step) : void();
    }
    if (key != Qt::Key_PageUp && key != Qt::Key_PageDown)
        return tellIf(tree.key(key, step.modifiers));
    tree.key(key, {});
    if (!tree.current)
        return;
    // To the edge of the screen; from there on by as many rows as it holds.
    const Rows rows = tree.shown();
    const int end = int(rows.size()) - 1;
    const int here = int(std::find(rows.begin(), rows.end(), tree.current) - rows.begin());
    const int page = std::max(1, seen.atOnce - 1);
    int to = 0;
    if (key == Qt::Key_PageUp)
        to = here > seen.first ? seen.first : std::max(0, here - page);
    else
        to = seen.last < 0 ? end : here < seen.last ? seen.last : std::min(end, here + page);
    tellIf(tree.moveTo(rows[std::size_t(to)], step.modifiers));
}

void Model::listKey(const Step& step, const Seen& seen) {
    const Qt::Key key = step.key;
    if (isShortcut(key))
        return shortcut(key, step);
    const int last = int(list.size()) - 1;
    if (last < 0)
        return;
    if (key == Qt::Key_Menu || key == Qt::Key_Return || key == Qt::Key_Enter) {
        if (seen.listRow < 0)
            return;
        if (key == Qt::Key_Menu)
            return itemMenu(topLevel()[std::size_t(seen.listRow)], step);
        highlighted = seen.listRow;
        return listEvent(Qt::LeftButton, seen.listRow, step);
    }
    int row = 0;
    if (seen.listRow >= 0)
        row = key == Qt::Key_Up     ? std::max(0, seen.listRow - 1)
              : key == Qt::Key_Down ? std::min(last, seen.listRow + 1)
              : key == Qt::Key_Home ? 0
                                    : last;
    if (row != seen.listRow)
        highlighted = row;
}

} // namespace plain
