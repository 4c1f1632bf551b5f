#include "SharedRows.h"

#include "Kinds.h"
#include "TreeItem.h"
#include "TreeView.h"

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

using TAVIK::Compound;

// Only sets and bonds have parts, and the parts of a bond do not follow its selection.
bool isSet(Compound* item) {
    return item && item->PartBegin() != item->PartEnd() && !dynamic_cast<TAVIK::Bond*>(item);
}

/// A member of a set, directly or of a set that is a member itself.
struct Member {
    bool isWanted = false;             ///< a set that is to stay selected lists it
    std::vector<TreeItem*> unselected; ///< the sets with the item that the gesture unselected
    TreeItem* row = nullptr;           ///< null in another entry
};

class Ties {
public:
    Ties(const TreeView& view, const RowRange& wanted) : m_view(view), m_wanted(wanted) {
        for (TreeItem* above = wanted.first->parent(); above; above = above->parent())
            m_above.insert(above);
    }

    /// Finds the sets that the gesture selected or unselected. Returns whether there are any.
    bool findSets() {
        for (TreeItemIterator it(&m_view); TreeItem* row = it.current();) {
            if (!row->holdsSets()) {
                it.skipBelow();
                continue;
            }
            if (row->childCount() == 0 && isSet(row->compound())) {
                if (m_wanted.holds(row))
                    addMembers(row->compound(), nullptr);
                else if (row->isDirty() && !row->isSelected() && !m_wanted.covers(row))
                    addMembers(row->compound(), row);
            }
            ++it;
        }
        return !m_members.empty();
    }

    void findRows() {
        for (TreeItemIterator it(&m_view); TreeItem* row = it.current(); ++it)
            if (const auto found = m_members.find(row->compound()); found != m_members.end())
                found->second.row = row;
    }

    /// Calls forgetUnselecting() for the rows of wanted members and those above and below.
    void leaveMembers() {
        for (auto& [item, member] : m_members) {
            if (!member.isWanted || !member.row || m_wanted.covers(member.row))
                continue;
            m_kept.insert(member.row);
            leaveBelow(member.row);
            for (TreeItem* above = member.row->parent(); above; above = above->parent()) {
                m_above.insert(above);
                above->forgetUnselecting();
            }
        }
    }

    /// Likewise for sets with a member that is wanted, or holds or is held by what is.
    void leaveSets() {
        std::unordered_set<const Compound*> elsewhere;
        for (const auto& [item, member] : m_members)
            if (member.isWanted && !member.row)
                forEachFrom(item, [&](Compound* c) { return !elsewhere.insert(c).second; });
        for (const auto& [item, member] : m_members)
            if (!member.unselected.empty() && isShared(item, member, elsewhere))
                for (TreeItem* set : member.unselected)
                    set->forgetUnselecting();
    }

private:
    void addMembers(Compound* set, TreeItem* unselected) {
        std::unordered_set<const Compound*> seen;
        std::vector<Compound*> sets{set};
        while (!sets.empty()) {
            Compound* const next = sets.back();
            sets.pop_back();
            for (Compound** part = next->PartBegin(); part != next->PartEnd(); ++part) {
                if (!seen.insert(*part).second)
                    continue;
                Member& member = m_members[*part];
                if (unselected)
                    member.unselected.push_back(unselected);
                else
                    member.isWanted = true;
                if (isSet(*part))
                    sets.push_back(*part);
            }
        }
    }

    // Wanted rows keep the marks that the gesture gave them.
    void leaveBelow(TreeItem* row) {
        const bool holdsWanted = m_above.count(row) > 0;
        TreeItemIterator end(row);
        end.skipBelow();
        for (TreeItemIterator it(row); it.current() != end.current();) {
            if (holdsWanted && m_wanted.holds(it.current())) {
                it.skipBelow();
                continue;
            }
            it.current()->forgetUnselecting();
            ++it;
        }
    }

    bool isShared(Compound* item, const Member& member,
                  const std::unordered_set<const Compound*>& elsewhere) const {
        if (member.isWanted)
            return true;
        if (!member.row)
            return !elsewhere.empty() &&
                   forEachFrom(item, [&](Compound* c) { return elsewhere.count(c) > 0; });
        if (m_above.count(member.row) > 0 || m_wanted.covers(member.row))
            return true;
        const TreeItem* row = member.row;
        while (row && m_kept.count(row) == 0)
            row = row->parent();
        return row;
    }

    // Calls `until` for an item and all that it holds, and stops once it returns true.
    template <class Until> static bool forEachFrom(Compound* item, Until until) {
        std::vector<Compound*> waiting{item};
        while (!waiting.empty()) {
            Compound* const next = waiting.back();
            waiting.pop_back();
            if (!next)
                continue;
            if (until(next))
                return true;
            waiting.insert(waiting.end(), next->ChildBegin(), next->ChildEnd());
        }
        return false;
    }

    const TreeView& m_view;
    const RowRange& m_wanted;
    std::unordered_map<Compound*, Member> m_members;
    std::unordered_set<const TreeItem*> m_kept;  ///< wanted members
    std::unordered_set<const TreeItem*> m_above; ///< the ancestors of wanted rows and members
};

} // namespace

void leaveSharedRows(const TreeView& view, const RowRange& wanted) {
    Ties ties(view, wanted);
    if (!ties.findSets())
        return;
    ties.findRows();
    ties.leaveMembers();
    ties.leaveSets();
}
