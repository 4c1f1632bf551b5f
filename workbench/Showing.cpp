#include "Showing.h"

#include "ByClass.h"
#include "ChangeData.h"
#include "DataPointBase.h"
#include "Kinds.h"
#include "Space.h"

#include <cstddef>

namespace workbench {

namespace {

using TAVIK::Compound;

class ShowOnly {
public:
    void below(Compound* item) {
        constexpr std::ptrdiff_t ahead = 8; // prefetched: most of the time is waiting for memory
        Compound** const end = item->ChildEnd();
        for (Compound** child = item->ChildBegin(); child != end; ++child) {
            if (end - child > ahead)
                __builtin_prefetch(child[ahead], 1);
            if (*child)
                show(*child);
        }
    }

private:
    enum class Role { Leaf, Residue, Composite };

    static Role roleOf(const Compound* item) {
        return dynamic_cast<const TAVIK::Residue*>(item) || dynamic_cast<const TAVIK::Group*>(item)
                   ? Role::Residue
               : dynamic_cast<const TAVIK::Composite*>(item) ? Role::Composite
                                                             : Role::Leaf;
    }

    void show(Compound* item) {
        switch (m_roles.of(item, roleOf)) {
        case Role::Leaf:
            // What has parts would hide them, which are items elsewhere.
            if (item->PartBegin() == item->PartEnd())
                item->SetVisible(item->IsSelected());
            break;
        case Role::Residue:
            if (item->IsSelected() || !item->HasSelected())
                item->SetVisible(item->IsSelected());
            else
                below(item);
            break;
        case Role::Composite:
            below(item);
            break;
        }
    }

    ByClass<Role> m_roles;
};

template <class Change> Showing changeShown(const char* label, Change change) {
    Showing showing = Showing::Refused;
    changeData(
        DataPointBase(nullptr, Publisher::Update, label),
        [&](DataPointBase&) {
            change();
            showing = Showing::Done;
        },
        Refusal::Silent);
    return showing;
}

} // namespace

Showing showOnlySelected() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    if (!space->HasSelected())
        return Showing::NothingSelected;
    return changeShown("Show only what is selected", [space] { ShowOnly().below(space); });
}

Showing showEverything() {
    return changeShown("Show everything", [] { TAVIK::Space::instance()->SetVisible(true); });
}

} // namespace workbench
