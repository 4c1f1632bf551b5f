#include "DataMaker.h"

#include "Attaching.h"
#include "Destroying.h"
#include "Items.h"
#include "Making.h"
#include "Origins.h"
#include "Selection.h"
#include "Sets.h"

#include <QtGlobal>

#include <memory>
#include <unordered_set>

namespace TAVIK {

using namespace memory_host;

Compound* DataMaker::makeCore(Compound* parent, const std::string& name, const std::string& kind) {
    Holder* holder = holderOf(parent, "makeCore", name);
    Kind wanted{};
    if (!holder || !findKind(kind, name, wanted))
        return nullptr;
    if (isNested(wanted, name, *holder, "makeCore"))
        return nullptr;
    return attachNew(std::unique_ptr<Compound>(newItem(wanted, name)), *holder);
}

Compound* DataMaker::makePolyLine(Compound* parent, const std::string& name,
                                  const std::vector<Vertex>& points) {
    Holder* holder = holderOf(parent, "makePolyLine", name);
    if (!holder)
        return nullptr;
    auto line = std::make_unique<PolyLineItem>(Name::component(name));
    line->m_points = points;
    return attachNew(std::move(line), *holder);
}

Compound* DataMaker::makeSet(Compound* parent, const std::string& name,
                             const std::vector<Compound*>& members) {
    Holder* holder = holderOf(parent, "makeSet", name);
    if (!holder)
        return nullptr;
    std::vector<Compound*> listed;
    std::unordered_set<Compound*> seen;
    listed.reserve(members.size());
    for (Compound* member : members)
        if (member && seen.insert(member).second)
            listed.push_back(member);
    auto set = std::make_unique<SetItem>(Name::component(name));
    listMembers(static_cast<SetRecord&>(HostItem::of(set.get())), listed);
    return attachNew(std::move(set), *holder);
}

void DataMaker::Destroy(Compound* item) {
    if (!item)
        return;
    if (HostItem::of(item).kind == Kind::Space) {
        qWarning("Destroy: the data space itself stays");
        return;
    }
    tellBeforeDestroying(item);
    ++selectionChanges;
    forgetOrigin(HostItem::of(item));
    detach(item);
    freeItem(item);
}

} // namespace TAVIK
