// Destroying items. The tree is emptied before the first item is destroyed, so that no row is
// painted or visited while its item is gone.
#include "Vuxo.h"

#include "DataMaker.h"
#include "Kinds.h"
#include "ListBox.h"
#include "Space.h"
#include "Traversal.h"
#include "VuxoDialogs.h"
#include "data/ItemRef.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace {

// RAII: empties the tree while items are destroyed, and keeps the rows for the same item.
class RowsAside {
public:
    explicit RowsAside(TreeView* tree) : m_tree(tree) { tree->setAside(); }
    ~RowsAside() { m_tree->dropAside(); }
    RowsAside(const RowsAside&) = delete;
    RowsAside& operator=(const RowsAside&) = delete;

private:
    TreeView* m_tree;
};

} // namespace

void Vuxo::KillBranch(TreeItem* Victim) {
    TAVIK::Compound* victim = Victim ? Victim->compound() : nullptr;
    TAVIK::Compound* shown = rootItem();
    if (!victim || !shown)
        return;
    attempt([this, victim, shown, slot = __func__] {
        const ItemRef root(shown);
        const ItemRef branch(victim);
        if (!confirmDelete(this, victim->GetName()))
            return;
        // After the dialog neither the row nor the items are known to exist.
        TAVIK::Compound* top = root.among(TAVIK::Space::instance());
        TAVIK::Compound* found = top && victim != shown ? branch.below(top) : top;
        withGuard<DataDelete>(slot, found, [this, &root](TAVIK::Compound* item) {
            const TAVIK::Changed destroyed(*item);
            const RowsAside rows(m_Tree);
            TAVIK::DataMaker::Destroy(item);
            renewList(root.inSpace());
            Populate(m_Current);
            return destroyed;
        });
    });
}

void Vuxo::renewList(TAVIK::Compound* shown) {
    const bool isTooLong = m_List->count() != topLevelCount();
    MakeList();
    if (isTooLong) {
        // A top-level bond was destroyed with its atom, or a top-level item as a member of a set.
        TAVIK::Compound** const begin = TAVIK::Space::instance()->ChildBegin();
        TAVIK::Compound** const end = TAVIK::Space::instance()->ChildEnd();
        setCurrent(shown ? static_cast<int>(std::find(begin, end, shown) - begin) : -1);
    }
    // The state of what is left may have changed (selected, shown).
    UpdateList();
}

void Vuxo::KillClump() {
    TAVIK::Compound* shown = rootItem();
    change<DataDelete>(
        shown && shown->IsSelected() ? shown : nullptr,
        [this](TAVIK::Compound* item) {
            const TAVIK::Changed destroyed(*item);
            m_Tree->clear();
            TAVIK::DataMaker::Destroy(item);
            m_Tree->triggerUpdate();
            MakeList();
            return destroyed;
        },
        Refusal::Silent);
}

void Vuxo::KillAll() {
    change<DataDelete>(
        TAVIK::Space::instance(),
        [this](TAVIK::Space* space) {
            // No copy of the entries, for which there may be no memory.
            const auto count = static_cast<std::size_t>(space->ChildEnd() - space->ChildBegin());
            const TAVIK::Changed destroyed =
                count == 1 ? TAVIK::Changed(**space->ChildBegin()) : TAVIK::Changed("entry", count);
            m_Tree->clear();
            while (space->ChildBegin() != space->ChildEnd())
                TAVIK::DataMaker::Destroy(*space->ChildBegin());
            m_Tree->triggerUpdate();
            MakeList();
            return destroyed;
        },
        Refusal::Silent);
}

namespace {

// Removes duplicates of kind `T`, and items that other items of the list hold.
template <class T> void leaveOutRepeated(std::vector<TAVIK::Compound*>& items) {
    std::vector<TAVIK::Compound*> held;
    for (TAVIK::Compound* item : items)
        TAVIK::GetItems<T>(item, held, true, nullptr, false);
    for (std::size_t i = 0; i != held.size(); ++i)
        TAVIK::GetItems<T>(held[i], held, true, nullptr, false);
    std::unordered_set<TAVIK::Compound*> seen(held.begin(), held.end());
    std::erase_if(items, [&seen](TAVIK::Compound* item) { return !seen.insert(item).second; });
}

} // namespace

// Destroys the selected items of kind `T` in the item of `row`, and shows what is left of it.
// `typeTag` is not read: it selects `T`.
template <class T> void KillItem(Vuxo* window, TreeItem* row, T* typeTag, const char* slot) {
    window->change<DataDelete>(
        row->compound(),
        [window, typeTag](TAVIK::Compound* item) {
            const RowsAside rows(window->m_Tree);
            std::vector<TAVIK::Compound*> items;
            TAVIK::GetItems<T>(item, items, false, typeTag, true);
            // A set can list both an item and one that holds it.
            if (!dynamic_cast<TAVIK::Composite*>(item))
                leaveOutRepeated<T>(items);
            const TAVIK::Changed destroyed(TAVIK::kindWord<T>, items);
            const ItemRef shown(item);
            constexpr std::size_t ahead = 8; // prefetched: destroying waits for memory
            for (std::size_t i = 0; i != items.size(); ++i) {
                if (i + ahead < items.size())
                    __builtin_prefetch(items[i + ahead]);
                TAVIK::DataMaker::Destroy(items[i]);
            }
            TAVIK::Compound* const left = shown.inSpace();
            window->renewList(left);
            if (left)
                window->showItem(left);
            else // A bond goes with its atoms.
                window->m_Tree->triggerUpdate();
            return destroyed;
        },
        Refusal::Silent, slot);
}

template <class T> void Vuxo::killShown(const char* slot) {
    if (TreeItem* top = m_Tree->firstChild())
        KillItem<T>(this, top, nullptr, slot);
}

void Vuxo::KillGroups() {
    killShown<TAVIK::Group>();
}

void Vuxo::KillResidues() {
    killShown<TAVIK::Residue>();
}

void Vuxo::KillGrids() {
    killShown<TAVIK::Grid>();
}

void Vuxo::KillSurfaces() {
    killShown<TAVIK::Surface>();
}

void Vuxo::KillBonds() {
    killShown<TAVIK::Bond>();
}

void Vuxo::KillAtoms() {
    killShown<TAVIK::Atom>();
}

void Vuxo::KillMolecules() {
    killShown<TAVIK::Molecule>();
}

void Vuxo::KillItems() {}
