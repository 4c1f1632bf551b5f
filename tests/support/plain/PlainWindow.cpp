#include "PlainWindow.h"

#include <algorithm>
#include <utility>

namespace plain {

bool Model::guarded(Who who, Change kind, const std::function<void()>& apply) {
    if (changing || locked)
        return false;
    changing = true;
    apply();
    changing = false;
    past.record(host);
    tell(who, kind);
    return true;
}

void Model::open(const std::function<void()>& enter) {
    const Edit waiting = std::exchange(answering, {});
    guarded(Who::Nobody, Change::Add, enter);
    answering = waiting;
}

void Model::travel(const Edit& edit) {
    const bool back = edit.kind != EditKind::Redo;
    const std::size_t count =
        edit.kind == EditKind::UndoData ? past.toLastOfData() : changesOf(edit, past.count(back));
    if (changing || locked || m_tellings > 0 || m_open > 0 || !past.has(back, count))
        return;
    const Turn turn = past.ahead(back, count);
    if (turn.removes) {
        tree.clear();
        stale = exists;
    }
    past.go(host, back, count);
    if (turn.removes)
        tell(Who::Nobody, Change::Delete);
    if (turn.adds)
        tell(Who::Nobody, Change::Add);
    tell(Who::Nobody, Change::Update);
}

void Model::editBehind(const Step& step) {
    ++m_open;
    edit(Who::Nobody, step.edit);
    --m_open;
}

void Model::tell(Who who, Change kind) {
    ++m_tellings;
    deletions += kind == Change::Delete;
    // Of a deletion everyone hears before an answer to it is told.
    for (std::size_t i = 0; i != m_untold.size(); ++i)
        if (m_untold[i] == Change::Delete) {
            m_untold.erase(m_untold.begin() + std::ptrdiff_t(i--));
            tellWindow(Change::Delete);
        }
    const bool toWindow = who != Who::Window && exists;
    if (toWindow)
        m_untold.push_back(kind);
    const std::size_t untold = m_untold.size();
    // The other subscriber was there before the window.
    if (who != Who::Other) {
        static const char* const names[] = {"update", "add", "delete"};
        const Rows rows = tree.all();
        const auto selected =
            std::count_if(rows.begin(), rows.end(), [](const Row* row) { return row->selected; });
        said.told << QStringLiteral("%1, %2 of %3 rows selected, %4")
                         .arg(QLatin1String(names[int(kind)]))
                         .arg(selected)
                         .arg(rows.size())
                         .arg(list.join(u'|'));
        edit(Who::Other, std::exchange(answering, {}));
    }
    if (toWindow && m_untold.size() == untold) {
        m_untold.pop_back();
        tellWindow(kind);
    }
    --m_tellings;
}

void Model::tellWindow(Change kind) {
    if (!exists)
        return;
    if (kind == Change::Update)
        commUpdate();
    else if (kind == Change::Add)
        commAdd();
    else
        commDelete();
}

int Model::indexOf(unsigned int id) {
    const auto found = std::find_if(topLevel().begin(), topLevel().end(),
                                    [id](const Item* item) { return item->id == id; });
    return found == topLevel().end() ? -1 : static_cast<int>(found - topLevel().begin());
}

void Model::change(Item* item, Change kind, const std::function<void()>& apply, Refusal refusal) {
    if (item && !guarded(Who::Window, kind, apply) && refusal == Refusal::Report)
        say("Cannot update CDB!");
}

bool Model::ask(const QString& dialog, const Step& step) {
    said.asked << dialog;
    ++dialogs;
    editBehind(step);
    return exists && step.answer == Answer::Accept;
}

// What the window shows of the data.

QString Model::entryText(const Item& item) const {
    return QLatin1String(Host::isVisible(item) ? " " : "O") +
           QLatin1String(Host::isSelected(item)    ? "X "
                         : Host::hasSelected(item) ? "/ "
                                                   : "_ ") +
           QString::fromLatin1(item.name);
}

void Model::makeList() {
    stale = false;
    const auto count = static_cast<qsizetype>(topLevel().size());
    if (list.size() == count)
        return;
    if (list.size() > count)
        current = -1;
    // Entries that come back stand where they stood.
    else if (current > -1 && isTopLevel(currentId))
        current = indexOf(currentId);
    list.clear();
    for (const Item* item : topLevel())
        list << entryText(*item);
    highlighted = current;
}

void Model::updateList() {
    if (list.size() != static_cast<qsizetype>(topLevel().size()))
        say("ASSERT: \"m_List->count() == items\" in Vuxo (400)");
    for (qsizetype i = 0; i < list.size(); ++i)
        list[i] = entryText(*topLevel()[static_cast<std::size_t>(i)]);
    if (current > -1)
        highlighted = current;
}

void Model::commUpdate() {
    if (stale)
        makeList();
    tree.update();
    updateList();
}

void Model::commAdd() {
    const bool wasStale = stale;
    makeList();
    if (wasStale)
        updateList();
    tree.addMissing();
    if (tree.top() && !tree.top()->children.empty())
        tree.setOpen(tree.top(), true);
}

void Model::commDelete() {
    say("Vuxo::commDelete(): Did somebody killed my data?");
    tree.clear();
    makeList();
}

void Model::populate(int index) {
    if (index >= 0 && index < static_cast<int>(topLevel().size()))
        tree.populate(topLevel()[static_cast<std::size_t>(index)]);
}

void Model::selectionChanged() {
    if (tree.top())
        change(host.space(), Change::Update, [this] {
            tree.handOver();
            commUpdate();
        });
}

void Model::listEvent(Qt::MouseButton button, int index, const Step& step) {
    if (index < 0)
        return;
    if (stale) {
        // The entry must still stand for what it stood for.
        const QStringList before = list;
        makeList();
        updateList();
        if (list.size() != before.size() || list[index].mid(3) != before[index].mid(3)) {
            highlighted = current;
            return;
        }
    }
    Item* item = topLevel()[static_cast<std::size_t>(index)];
    const QString name = list[index].mid(3);
    const bool sameName = name == QString::fromLatin1(item->name);
    const unsigned int id = item->id;
    if (button == Qt::LeftButton && (current != index || root() != item)) {
        current = index;
        currentId = id;
        populate(index);
    } else if (button == Qt::RightButton) {
        change(host.space(), Change::Update, [&] {
            if (!sameName)
                say("ASSERT: \"ch->GetName() == Name\" in Vuxo (456)");
            Host::setVisible(*item, !Host::isVisible(*item));
            if (!Host::isVisible(*item))
                Host::setSelected(*item, false);
            commUpdate();
        });
    } else if (button == Qt::MiddleButton) {
        if (!sameName)
            say("ASSERT: \"Name == clump->GetName()\" in Vuxo (471)");
        const QString question = "Warning: Delete " + QString::fromLatin1(item->name) + "?";
        if (ask(question, step) && isTopLevel(id))
            change(
                item, Change::Delete,
                [&] {
                    current = -1;
                    tree.clear();
                    host.destroy(item);
                    makeList();
                },
                Refusal::Silent);
    }
    highlighted = current;
}

// Deleting.

void Model::killBranch(Item* item, const Step& step) {
    const unsigned int top = root()->id;
    const unsigned int victim = item->id;
    if (!ask("Warning: Delete " + QString::fromLatin1(item->name) + "?", step))
        return;
    // Others may have destroyed either meanwhile.
    if (!isTopLevel(top) || !host.find(victim))
        return;
    change(item, Change::Delete, [&] {
        tree.clear();
        host.destroy(item);
        renewList(top);
        populate(current);
    });
}

// A set can name top-level items, and a bond goes with its atoms. Returns the item of that
// identifier, which was shown, or null.
Item* Model::renewList(unsigned int shownId) {
    const int left = indexOf(shownId);
    if (list.size() != static_cast<qsizetype>(topLevel().size())) {
        makeList();
        current = left;
        currentId = shownId;
    }
    updateList();
    return left < 0 ? nullptr : topLevel()[static_cast<std::size_t>(left)];
}

void Model::killSelected(Kind kind) {
    Item* const item = root();
    change(
        item, Change::Delete,
        [&] {
            tree.clear();
            const unsigned int shownId = item->id;
            std::vector<unsigned int> victims;
            for (const Item* each : Host::below(item, kind, false))
                victims.push_back(each->id);
            for (const unsigned int id : victims)
                if (Item* victim = host.find(id))
                    host.destroy(victim);
            if (Item* const left = renewList(shownId))
                tree.populate(left);
        },
        Refusal::Silent);
}

// The frame around the window.

void Model::create() {
    exists = true;
    shown = minimised = panelShown = false;
    tree = Tree();
    current = highlighted = -1;
    list.clear();
    fields = {QStringLiteral(".*"), QStringLiteral(".*"), QStringLiteral(".*")};
    treeOnly = true;
    makeList();
}

void Model::kill() {
    say("GUIPlugin: fKill");
    exists = shown = minimised = panelShown = false;
    tree = Tree();
    list.clear();
    highlighted = current = -1;
}

void Model::close() {
    shown = minimised = false;
}

void Model::call(const QString& entryPoint, const QString& name) {
    if (entryPoint == u"Cleanup") {
        say("GUIPlugin::Cleanup()");
        if (exists)
            kill();
        return;
    }
    if (!exists)
        create();
    const bool isKnown = entryPoint == u"CommandC" && (name == u"Show" || name == u"Kill");
    if (!isKnown) {
        said.messages << entryPoint + " '" + name + "' not recognized";
        return;
    }
    if (name == u"Kill") {
        kill();
    } else {
        shown = true;
        minimised = false;
    }
    say("GUIPlugin::CommandC: Execution successful");
}

} // namespace plain
