#include "Origins.h"

#include "Holder.h"
#include "ItemOrigin.h"

#include <QFile>

#include <filesystem>
#include <system_error>
#include <unordered_map>

namespace memory_host {

namespace {

/// Absolute paths by the identifiers of the items.
std::unordered_map<std::uint32_t, std::string>& origins() {
    // Never destroyed: items may outlive every static object.
    static auto* const all = new std::unordered_map<std::uint32_t, std::string>;
    return *all;
}

} // namespace

void setOrigin(const Compound* item, const std::string& path) {
    std::error_code problem;
    const std::filesystem::path whole = std::filesystem::absolute(path, problem);
    // If the working directory cannot be found, the path is kept as it is.
    origins()[item->GetId()] = problem ? path : whole.lexically_normal().string();
}

void forgetOrigin(const HostItem& item) {
    if (!item.parent || item.parent->kind == Kind::Space)
        origins().erase(item.id);
}

std::size_t originCount() {
    return origins().size();
}

} // namespace memory_host

QString TAVIK::OriginOf(const Compound* item) {
    if (!item)
        return {};
    const auto found = memory_host::origins().find(item->GetId());
    return found == memory_host::origins().end() ? QString()
                                                 : QFile::decodeName(found->second.c_str());
}
