#include "Origins.h"

#include "Holder.h"
#include "ItemOrigin.h"

#include <QFile>

#include <filesystem>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace memory_host {

namespace {

struct Origin {
    std::string path; ///< absolute
    std::shared_ptr<ItemSource> source;
};

/// By the identifiers of the items.
std::unordered_map<std::uint32_t, Origin>& origins() {
    // Never destroyed: items may outlive every static object.
    static auto* const all = new std::unordered_map<std::uint32_t, Origin>;
    return *all;
}

const Origin& originOf(const Compound* item) {
    static const Origin none;
    const auto found = item ? origins().find(item->GetId()) : origins().end();
    return found == origins().end() ? none : found->second;
}

} // namespace

ItemSource::~ItemSource() = default;

void setOrigin(const Compound* item, const std::string& path, std::shared_ptr<ItemSource> source) {
    std::error_code problem;
    const std::filesystem::path whole = std::filesystem::absolute(path, problem);
    // If the working directory cannot be found, the path is kept as it is.
    std::string kept = problem ? path : whole.lexically_normal().string();
    origins()[item->GetId()] = {std::move(kept), std::move(source)};
}

std::string originPath(const Compound* item) {
    return originOf(item).path;
}

std::shared_ptr<ItemSource> sourceOf(const Compound* item) {
    return originOf(item).source;
}

std::vector<KnownOrigin> knownOrigins() {
    std::vector<KnownOrigin> known;
    known.reserve(origins().size());
    for (const auto& [item, origin] : origins())
        known.push_back({item, origin.path, origin.source});
    return known;
}

void forgetOrigin(const HostItem& item) {
    origins().erase(item.id);
}

std::size_t originCount() {
    return origins().size();
}

} // namespace memory_host

QString TAVIK::OriginOf(const Compound* item) {
    return QFile::decodeName(memory_host::originOf(item).path.c_str());
}
