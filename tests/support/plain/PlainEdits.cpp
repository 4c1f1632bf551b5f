// What others do to the data in the plain model.
#include "PlainWindow.h"

namespace plain {

void Model::addLeaf(Item* parent, unsigned int value) {
    static const Kind kinds[] = {Kind::Surface, Kind::Grid, Kind::PolyLine, Kind::Grid};
    Item* leaf = host.make(parent, choose(kinds, value), "leaf");
    if (leaf->kind != Kind::Grid)
        return;
    const GridValues values(value);
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
    if (edit.kind == EditKind::Command) {
        if (exists)
            runCommand(*this, choose(calledSlots, edit.value), m_step);
        return;
    }
    if (edit.kind == EditKind::Entry) {
        if (exists && !list.isEmpty())
            listEvent(Qt::LeftButton, int(edit.value % unsigned(list.size())), m_step);
        return;
    }
    const Items all = host.all();
    Item* item = all.empty() ? nullptr : all[edit.target % all.size()];
    const unsigned int value = edit.value;
    const auto box = [&]() -> Item* { // the item, or what holds it
        Item* holder = item ? item : host.space();
        return holder->isComposite() ? holder : holder->parent;
    };
    switch (edit.kind) {
    case EditKind::Select:
    case EditKind::Show:
    case EditKind::Paint:
    case EditKind::Model:
    case EditKind::SetAtom:
        if (!item)
            return;
        guarded(who, Change::Update, [&] {
            if (edit.kind == EditKind::Select)
                Host::setSelected(*item, value % 2);
            else if (edit.kind == EditKind::Show)
                Host::setVisible(*item, value % 2);
            else if (edit.kind == EditKind::Paint)
                item->color = 0xff000000U | value;
            else if (edit.kind == EditKind::Model && item->kind == Kind::Residue)
                Host::switchModel(*item, static_cast<Host::Switch>(value % 3));
            else if (edit.kind == EditKind::SetAtom && item->kind == Kind::Atom)
                host.setAtom(*item, madeAtom(value));
        });
        return;
    case EditKind::AddAtom:
        guarded(who, Change::Add, [&] {
            Item* atom = host.make(box(), Kind::Atom, choose(madeNames, value));
            host.setAtom(*atom, madeAtom(value));
        });
        return;
    case EditKind::AddAmong:
        guarded(who, Change::Add, [&] {
            Item* atom =
                host.make(value % 4 ? host.space() : box(), Kind::Atom, choose(madeNames, value));
            host.setAtom(*atom, madeAtom(value));
            if (item)
                Host::setSelected(*item, value % 2);
        });
        return;
    case EditKind::AddBond: {
        Item* other = all.empty() ? nullptr : all[value % all.size()];
        if (item && item != other && item->kind == Kind::Atom && other->kind == Kind::Atom)
            guarded(who, Change::Add, [&] {
                host.makeBond(value % 4 ? Host::boxAround(item) : host.space(), item, other);
            });
        return;
    }
    case EditKind::AddLeaf:
        guarded(who, Change::Add, [&] { addLeaf(box(), value); });
        return;
    case EditKind::AddBox:
        guarded(who, Change::Add, [&] {
            const auto kind = static_cast<Kind>(1 + value % 4);
            host.make(box(), Host::nests(kind, box()) ? Kind::Composite : kind, "box");
        });
        return;
    case EditKind::AddTop:
        guarded(who, Change::Add, [&] {
            if (value % 2)
                host.make(host.space(), static_cast<Kind>(1 + value / 2 % 4), "top");
            else
                addLeaf(host.space(), value / 2);
        });
        return;
    case EditKind::AddSet:
        guarded(who, Change::Add, [&] {
            Items members;
            const Items& from = value % 6 ? all : topLevel();
            for (unsigned int i = 0; i != value % 4 && !from.empty(); ++i)
                members.push_back(from[(edit.target + i * value) % from.size()]);
            host.makeSet(value % 3 ? box() : host.space(), "set", members);
        });
        return;
    case EditKind::Destroy:
        if (value < 4)
            item = topLevel().empty() ? nullptr : topLevel()[edit.target % topLevel().size()];
        if (item)
            guarded(who, Change::Delete, [&] { destroyBeforeAll(item); });
        return;
    case EditKind::Swap:
        if (!topLevel().empty())
            guarded(who, Change::Delete, [&] {
                destroyBeforeAll(topLevel()[edit.target % topLevel().size()]);
                host.make(host.space(), Kind::Composite, "swapped");
            });
        return;
    default:
        return;
    }
}

} // namespace plain
