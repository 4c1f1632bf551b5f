#include "Making.h"

#include "Holder.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <array>

namespace memory_host {

namespace {

// A Latin-1 name as UTF-8, for warnings.
QByteArray utf8(const std::string& name) {
    return QString::fromLatin1(name).toUtf8();
}

// Kinds that never nest, at any depth: a search for residues or groups enters none that it has
// found, and a residue's models are those of all its atoms.
constexpr std::array<Kind, 2> singleKinds = {Kind::Residue, Kind::Group};

// Whether an item is of that kind or holds one that is.
bool isOrHolds(const HostItem& item, Kind kind) {
    if (item.kind == kind)
        return true;
    if (!item.isHolder())
        return false;
    const auto& holder = static_cast<const Holder&>(item);
    if (holder.directLeaves == holder.childCount())
        return false;
    return std::any_of(
        holder.children + holder.begin, holder.children + holder.end,
        [kind](const Compound* child) { return child && isOrHolds(HostItem::of(child), kind); });
}

void refuse(const char* what, Kind kind, const std::string& name, const Holder& parent) {
    const char* const word = kind == Kind::Residue ? "residue" : "group";
    qWarning("%s: \"%s\" cannot stand in \"%s\": no %s stands in a %s", what,
             utf8(name).constData(), utf8(parent.self->GetName()).constData(), word, word);
}

} // namespace

Holder* holderOf(Compound* parent, const char* what, const std::string& name) {
    if (!parent) {
        qWarning("%s: no parent for \"%s\"", what, utf8(name).constData());
        return nullptr;
    }
    HostItem& record = HostItem::of(parent);
    if (!record.isHolder()) {
        qWarning("%s: \"%s\" holds no items, so that \"%s\" cannot be made in it", what,
                 utf8(parent->GetName()).constData(), utf8(name).constData());
        return nullptr;
    }
    return &record.asHolder();
}

bool findKind(const std::string& className, const std::string& name, Kind& kind) {
    if (kindOfName(className, kind))
        return true;
    qWarning("makeCore: there is no kind \"%s\" for \"%s\"", className.c_str(), name.c_str());
    return false;
}

bool isNested(Kind kind, const std::string& name, Holder& parent, const char* what) {
    const bool isSingle =
        std::find(singleKinds.begin(), singleKinds.end(), kind) != singleKinds.end();
    if (!isSingle || !nearest(kind, &parent))
        return false;
    refuse(what, kind, name, parent);
    return true;
}

bool isNested(const HostItem& item, Holder& parent, const char* what) {
    for (const Kind kind : singleKinds) {
        if (nearest(kind, &parent) && isOrHolds(item, kind)) {
            refuse(what, kind, item.name.text(), parent);
            return true;
        }
    }
    return false;
}

} // namespace memory_host
