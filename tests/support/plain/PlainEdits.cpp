// What others do to the data in the plain model.
#include "PlainWindow.h"

namespace plain {

void Model::addLeaf(Item* parent, const Edit& edit) {
    Item* leaf = host.make(parent, addedKind(edit), "leaf");
    if (leaf->kind != Kind::Grid)
        return;
    const GridValues values(leafValue(edit));
    leaf->points = leaf->upper = values.points;
    leaf->origin = values.origin;
    leaf->step = values.step;
}

// The window empties its tree at once, whenever it hears of the deletion.
void Model::destroyBeforeAll(Item* item) {
    tree.clear();
    stale = exists;
    host.destroy(item);
}

void Model::edit(Who who, const Edit& edit) {
    if (edit.kind == EditKind::None)
        return;
    if (edit.kind == EditKind::Highlight) {
        showSelection = !showSelection;
        return;
    }
    if (edit.kind == EditKind::Throw) {
        if (who == Who::Other)
            said.log << QLatin1String("a subscriber failed to take in a change: ") +
                            QLatin1String(complaint);
        return;
    }
    if (edit.kind == EditKind::Kill)
        return call(QStringLiteral("CommandC"), QStringLiteral("Kill"));
    if (edit.kind == EditKind::Look)
        return;
    if (isTravel(edit))
        return travel(edit);
    if (edit.kind == EditKind::Command) {
        if (exists)
            runCommand(*this, edit.name, m_step);
        return;
    }
    if (edit.kind == EditKind::Entry) {
        if (exists && !list.isEmpty())
            listEvent(Qt::LeftButton,
                      countedRound(edit.value, static_cast<std::size_t>(list.size())), m_step);
        return;
    }
    const Edited<Item> edited(edit, host.all(), topLevel());
    Item* const item = edited.item;
    switch (edit.kind) {
    case EditKind::Select:
    case EditKind::Show:
    case EditKind::Paint:
    case EditKind::Model:
    case EditKind::SetAtom:
        if (item)
            guarded(who, Change::Update, [&] { changeItem(*item, edit); });
        return;
    case EditKind::Destroy:
    case EditKind::Swap:
        if (item)
            guarded(who, Change::Delete, [&] {
                destroyBeforeAll(item);
                if (edit.kind == EditKind::Swap)
                    host.make(host.space(), Kind::Composite, "swapped");
            });
        return;
    case EditKind::AddBond:
        if (!item || item == edited.second || item->kind != Kind::Atom ||
            edited.second->kind != Kind::Atom)
            return;
        [[fallthrough]];
    default:
        guarded(who, Change::Add, [&] { addItem(edited, edit); });
    }
}

void Model::changeItem(Item& item, const Edit& edit) {
    if (edit.kind == EditKind::Select)
        Host::setSelected(item, turnsOn(edit));
    else if (edit.kind == EditKind::Show)
        Host::setVisible(item, turnsOn(edit));
    else if (edit.kind == EditKind::Paint)
        item.color = paintedColor(edit);
    else if (edit.kind == EditKind::Model && item.kind == Kind::Residue)
        Host::switchModel(item, modelSwitch(edit));
    else if (edit.kind == EditKind::SetAtom && item.kind == Kind::Atom && item.isOfFile())
        host.moveAtom(item, madeAtom(edit.value));
    else if (edit.kind == EditKind::SetAtom && item.kind == Kind::Atom)
        host.setAtom(item, madeAtom(edit.value));
}

void Model::addItem(const Edited<Item>& edited, const Edit& edit) {
    Item* const item = edited.item;
    const Kind kind = addedKind(edit);
    // The item, or what holds it.
    Item* box = item && !addsToSpace(edit) ? item : host.space();
    if (!box->isComposite())
        box = box->parent;
    if (kind == Kind::Bond) {
        host.makeBond(addsToSpace(edit) ? host.space() : Host::boxAround(item), item,
                      edited.second);
    } else if (kind == Kind::Set) {
        host.makeSet(box, "set", edited.members);
    } else if (kind == Kind::Atom) {
        host.setAtom(*host.make(box, Kind::Atom, madeName(edit.value)), madeAtom(edit.value));
        if (edit.kind == EditKind::AddAmong && item)
            Host::setSelected(*item, turnsOn(edit));
    } else if (kind > Kind::Group) {
        addLeaf(box, edit);
    } else {
        host.make(box, Host::nests(kind, box) ? Kind::Composite : kind,
                  edit.kind == EditKind::AddTop ? "top" : "box");
    }
}

} // namespace plain
