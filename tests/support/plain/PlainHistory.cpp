#include "PlainHistory.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace plain {

Host::Copy Host::copy() const {
    const auto idsOf = [](const Items& items) {
        std::vector<unsigned int> ids;
        for (const Item* item : items)
            ids.push_back(item->id);
        return ids;
    };
    Copy all;
    for (const auto& item : m_items) {
        all.push_back({*item, item->parent ? item->parent->id : 0, idsOf(item->children),
                       idsOf(item->parts)});
        all.back().item.children.clear();
        all.back().item.parts.clear();
    }
    return all;
}

void Host::restore(const Copy& copy) {
    std::map<unsigned int, std::unique_ptr<Item>> old;
    for (auto& item : m_items)
        old[item->id] = std::move(item);
    m_items.clear();
    std::map<unsigned int, Item*> items;
    for (const Copied& each : copy) {
        std::unique_ptr<Item>& item = old[each.item.id];
        m_items.push_back(item ? std::move(item) : std::make_unique<Item>());
        items[each.item.id] = m_items.back().get();
    }
    for (std::size_t i = 0; i != copy.size(); ++i) {
        Item& item = *m_items[i];
        item = copy[i].item;
        item.parent = item.kind == Kind::Space ? nullptr : items.at(copy[i].parent);
        for (const unsigned int id : copy[i].children)
            item.children.push_back(items.at(id));
        for (const unsigned int id : copy[i].parts)
            item.parts.push_back(items.at(id));
    }
}

namespace {

bool isData(const Item& item, bool hasChildren) {
    return item.kind == Kind::Atom || item.kind == Kind::Bond ||
           (item.isComposite() && hasChildren);
}

bool hasOtherValues(const Item& a, const Item& b) {
    return a.model != b.model || a.type != b.type || a.position != b.position ||
           a.hasPosition != b.hasPosition || a.temperature != b.temperature ||
           !(a.details == b.details);
}

// Whether the own marks of an item count.
bool hasMarks(const Host::Copied& copied) {
    return !copied.item.heldLeaves && (copied.item.kind != Kind::Set || copied.parts.empty());
}

bool isOtherwise(const Item& a, const Item& b) {
    return a.color != b.color || hasOtherValues(a, b) || a.lower != b.lower || a.upper != b.upper;
}

} // namespace

void Host::noteChanges(const Copy& before, unsigned int& lastVersion) {
    std::map<unsigned int, const Copied*> old;
    for (const Copied& each : before)
        old[each.item.id] = &each;
    std::set<unsigned int> changed;
    std::set<unsigned int> left;
    for (const auto& item : m_items) {
        left.insert(item->id);
        const auto was = old.find(item->id);
        const bool isLeaf = item->kind == Kind::Atom || item->kind == Kind::Bond;
        const bool isOther = was == old.end() ||
                             (item->kind == Kind::Atom && hasOtherValues(*item, was->second->item));
        const Item* top = item.get();
        while (isLeaf && isOther && top->parent->kind != Kind::Space)
            top = top->parent;
        // What comes as a whole is as it came.
        if (top != item.get() && old.count(top->id))
            changed.insert(top->id);
    }
    for (const Copied& gone : before) {
        if (left.count(gone.item.id) || !isData(gone.item, !gone.children.empty()))
            continue;
        const Copied* top = &gone;
        while (top->parent != space()->id)
            top = old.at(top->parent);
        changed.insert(top->item.id);
    }
    for (const unsigned int id : changed)
        if (Item* const top = find(id))
            top->version = ++lastVersion;
}

Past::Change Past::between(CopyPtr before, CopyPtr after) {
    std::map<unsigned int, const Host::Copied*> old;
    for (const Host::Copied& each : *before)
        old[each.item.id] = &each;
    Change change;
    bool selects = false;
    bool updates = false;
    for (const Host::Copied& now : *after) {
        const auto found = old.find(now.item.id);
        if (found == old.end()) {
            change.again.adds = true;
            continue;
        }
        const Host::Copied& was = *found->second;
        old.erase(found);
        const bool counts = hasMarks(was) && hasMarks(now);
        selects = selects || (counts && was.item.selected != now.item.selected);
        updates = updates || (counts && was.item.visible != now.item.visible) ||
                  isOtherwise(was.item, now.item);
    }
    change.again.removes = !old.empty();
    const bool changesData = change.again.adds || change.again.removes || updates;
    change.onlySelects = selects && !changesData;
    change.isNothing = !selects && !changesData;
    change.before = std::move(before);
    change.after = std::move(after);
    return change;
}

void Past::begin(const Host& host) {
    *this = Past(m_lastVersion);
    m_now = std::make_shared<Host::Copy>(host.copy());
}

void Past::record(Host& host) {
    host.noteChanges(*m_now, m_lastVersion);
    CopyPtr after = std::make_shared<Host::Copy>(host.copy());
    m_done.push_back(between(m_now, after));
    m_now = std::move(after);
    ++m_new;
}

bool Past::has(bool back, std::size_t count) const {
    return count != 0 && count <= this->count(back);
}

std::size_t Past::toLastOfData() const {
    for (std::size_t i = 0; i != m_done.size(); ++i)
        if (!m_done[m_done.size() - 1 - i].onlySelects)
            return i + 1;
    return 0;
}

Turn Past::ahead(bool back, std::size_t count) const {
    const std::vector<Change>& from = back ? m_done : m_undone;
    Turn all;
    for (std::size_t i = from.size() - count; i != from.size(); ++i) {
        all.adds = all.adds || (back ? from[i].again.removes : from[i].again.adds);
        all.removes = all.removes || (back ? from[i].again.adds : from[i].again.removes);
    }
    return all;
}

void Past::go(Host& host, bool back, std::size_t count) {
    std::vector<Change>& from = back ? m_done : m_undone;
    std::vector<Change>& to = back ? m_undone : m_done;
    for (; count != 0; --count) {
        m_now = back ? from.back().before : from.back().after;
        to.push_back(std::move(from.back()));
        from.pop_back();
    }
    host.restore(*m_now);
}

QString Past::text(bool back) const {
    QString text;
    for (const Change& change : back ? m_done : m_undone)
        text += change.onlySelects ? u's' : u'd';
    return text;
}

bool Past::keep(const QString& real) {
    const std::size_t old = m_done.size() - std::exchange(m_new, 0);
    const auto isNothing = [](const Change& change) { return change.isNothing; };
    const auto first = m_done.begin() + std::ptrdiff_t(old);
    const auto nothings = std::size_t(std::count_if(first, m_done.end(), isNothing));
    const auto kept = std::size_t(real.size());
    if (kept < m_done.size() && kept > m_done.size() - nothings)
        return false;
    if (kept != m_done.size())
        m_done.erase(std::remove_if(first, m_done.end(), isNothing), m_done.end());
    for (std::size_t i = old; i < std::min(kept, m_done.size()); ++i)
        if (m_done[i].isNothing)
            m_done[i].onlySelects = real[qsizetype(i)] == u's';
    if (m_done.size() != old)
        m_undone.clear();
    return true;
}

} // namespace plain
