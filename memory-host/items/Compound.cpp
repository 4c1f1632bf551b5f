#include "Compound.h"

#include "AtomItem.h"
#include "ElementColours.h"
#include "Holder.h"
#include "Recording.h"
#include "Sets.h"

#include <algorithm>

namespace TAVIK {

using namespace memory_host;

namespace {

void paint(Compound& item, HostItem& record, Color color) {
    const std::uint32_t rgba = color.rgba();
    if (record.color == rgba)
        return;
    if (Step* const step = stepFor(record); !step || step->recordColour(&item, record.color))
        record.color = rgba;
}

} // namespace

Compound::~Compound() = default;
Composite::~Composite() = default;

std::string Compound::GetFQName() const {
    const HostItem& record = HostItem::of(this);
    if (record.kind == Kind::Space)
        return {};
    const auto forEachHolder = [&record](auto use) {
        for (const Holder* holder = record.parent; holder; holder = holder->parent)
            if (holder->isInNames())
                use(holder->name.text());
    };
    // Allocated once and filled from its end.
    const std::string own = GetName();
    std::size_t size = 1 + own.size();
    forEachHolder([&size](const std::string& component) { size += 1 + component.size(); });
    std::string name(size, '/');
    auto end = std::copy_backward(own.begin(), own.end(), name.end()) - 1;
    forEachHolder([&end](const std::string& component) {
        end = std::copy_backward(component.begin(), component.end(), end) - 1;
    });
    return name;
}

unsigned int Compound::GetId() const {
    return HostItem::of(this).id;
}

Compound** Compound::PartBegin() {
    HostItem& record = hostItem();
    if (record.kind == Kind::Set)
        return static_cast<SetRecord&>(record).listed().data();
    if (record.kind == Kind::Bond && static_cast<BondItem*>(this)->m_atoms[0])
        return static_cast<BondItem*>(this)->m_atoms.data();
    return nullptr;
}

Compound** Compound::PartEnd() {
    HostItem& record = hostItem();
    Compound** const begin = PartBegin();
    if (record.kind == Kind::Set)
        return begin + static_cast<SetRecord&>(record).memberCount();
    return begin ? begin + 2 : nullptr;
}

Color Compound::GetColor() const {
    return Color(HostItem::of(this).color);
}

void Compound::SetColor(const Color& color) {
    paint(*this, hostItem(), color);
}

void Compound::RestoreColor() {
    HostItem& record = hostItem();
    paint(*this, record, defaultColor(record));
}

void Compound::ToggleSelected() {
    SetSelected(!IsSelected());
}

void Compound::ToggleVisible() {
    SetVisible(!IsVisible());
}

} // namespace TAVIK
