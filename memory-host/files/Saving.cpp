#include "Saving.h"

#include "EntrySource.h"
#include "Fields.h"
#include "FileBytes.h"
#include "FileKind.h"
#include "Gzip.h"
#include "MadeBonds.h"
#include "ReplaceFile.h"
#include "SavedItems.h"
#include "Space.h"
#include "items/DataVersion.h"

#include <algorithm>
#include <filesystem>
#include <future>
#include <iterator>
#include <optional>
#include <unordered_set>
#include <utility>

namespace memory_host {

class SavePlan {
public:
    explicit SavePlan(const std::string& itsPath)
        : path(itsPath), noMemory(itsPath + ": there is not enough memory to save it; accepted is "
                                            "saving again when other programs or entries are "
                                            "closed") {}

    std::string path;
    SaveError noMemory; ///< made before memory can run out
    bool isGzipped = false;
    const FileFormat* format = nullptr;
    SavedContent content;
    std::vector<std::string> remarks; ///< from the reading of the items
    std::vector<unsigned int> items;  ///< identifiers
    std::shared_ptr<FileOnDisk> file; ///< that is replaced; a new one, unless it is the items'
    FileStamp expected;               ///< the state in which that must be
    FileStamp written;
};

void SavePlanDeleter::operator()(SavePlan* plan) const {
    delete plan;
}

namespace {

constexpr std::string_view packedEnding = ".gz";

bool isWritten(const FileFormat* format) {
    return format->write != nullptr || format->edit != nullptr;
}

// The endings of the formats that are wanted, as the end of a sentence.
template <class IsWanted> std::string acceptedEndings(const IsWanted& isWanted) {
    std::string text = "accepted are names that end in";
    const char* separator = " ";
    for (const FileFormat* format : fileFormats()) {
        if (!isWritten(format) || !isWanted(format))
            continue;
        for (const std::string_view ending : format->endings) {
            text.append(separator).append(ending);
            separator = ", ";
        }
    }
    return text + ", each also with .gz";
}

// The format that a file's name asks for.
const FileFormat& formatOf(const SavePlan& plan, const SaveReport& report) {
    std::string_view name = plan.path;
    if (plan.isGzipped)
        name.remove_suffix(packedEnding.size());
    for (const FileFormat* format : fileFormats())
        for (const std::string_view ending : format->endings)
            if (isWritten(format) && endsWith(name, ending))
                return *format;
    report.refuse("the ending of its name tells no format that can be saved", savableFiles());
}

void checkContent(const SavePlan& plan, const SaveReport& report) {
    const bool isMap = plan.content.grid.has_value();
    const auto holds = isMap ? FileFormat::Holds::Map : FileFormat::Holds::Structure;
    if (plan.format->holds != holds)
        report.refuse(
            std::string(plan.format->name) + " files hold no " + (isMap ? "maps" : "structures"),
            acceptedEndings([holds](const FileFormat* format) { return format->holds == holds; }));
    if (plan.content.structures.size() > 1 && !plan.format->holdsSeveral)
        report.refuse("\"" + plan.content.structures[0].models[0].name + "\" and \"" +
                          plan.content.structures[1].models[0].name +
                          "\" are not models of one structure, and a " +
                          std::string(plan.format->name) + " file holds one",
                      "accepted is saving each in a file of its own, or all in an mmCIF file");
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code problem;
    return a == b || std::filesystem::equivalent(a, b, problem);
}

std::shared_ptr<EntrySource> entrySourceOf(const TAVIK::Compound* item) {
    return std::static_pointer_cast<EntrySource>(sourceOf(item));
}

// The file at a path, if it is the one of these items.
std::shared_ptr<FileOnDisk> fileOf(std::span<TAVIK::Compound* const> items,
                                   const std::string& path) {
    for (const TAVIK::Compound* item : items)
        if (const auto source = entrySourceOf(item);
            source && source->file && isSameFile(originPath(item), path))
            return source->file;
    return nullptr;
}

// Refuses to save a file without entries that it holds.
void checkClosed(const SavePlan& plan, const SaveReport& report) {
    std::vector<std::uint32_t> saved = plan.items;
    std::ranges::sort(saved);
    std::vector<std::uint32_t> closed;
    std::ranges::set_difference(plan.file->entries, saved, std::back_inserter(closed));
    if (!closed.empty())
        report.refuse("holds " + std::to_string(plan.file->entries.size()) + " entries, of which " +
                          std::to_string(closed.size()) + (closed.size() == 1 ? " is" : " are") +
                          " closed and would be lost",
                      "accepted is a file of another name", SaveError::Reason::LosesClosed);
}

// The text that all structures are of, if that is of the format to be written.
const SourceText* textToEdit(const SavePlan& plan) {
    const std::vector<SavedStructure>& structures = plan.content.structures;
    if (structures.empty() || !structures.front().source || !plan.format->edit)
        return nullptr;
    const std::shared_ptr<const SourceText>& text = structures.front().source;
    const bool isOne = std::ranges::all_of(
        structures, [&text](const SavedStructure& other) { return other.source == text; });
    return isOne && &text->format() == plan.format ? text.get() : nullptr;
}

// The bytes of a whole map that was read from a file of this format, if that is as it was.
std::optional<std::string> unchangedMap(const SavePlan& plan, SaveReport& report) {
    if (plan.content.mapPath.empty() || !plan.content.mapStamp.isKnown())
        return std::nullopt;
    try {
        const ReadBytes read = readFile(FileReport(plan.content.mapPath), [](auto) {}, {});
        if (read.stamp != plan.content.mapStamp || binaryFormatOf(read.text.text()) != plan.format)
            return std::nullopt;
        if (!plan.isGzipped)
            return std::string(read.text.text());
        return read.gzipped.size() != 0 ? std::string(read.gzipped.text())
                                        : gzipped(read.text.text(), report);
    } catch (const FileError&) { // Its values are here all the same.
        return std::nullopt;
    }
}

// The bytes of the file. A gzipped file that was not edited keeps its own.
std::string bytesOf(const SavePlan& plan, SaveReport& report) {
    if (std::optional<std::string> map = unchangedMap(plan, report))
        return std::move(*map);
    const SourceText* const text = textToEdit(plan);
    if (!text && !plan.format->write)
        report.refuse("its entries come from no one " + std::string(plan.format->name) + " file",
                      "accepted is saving entries in the format of their file");
    std::string bytes =
        text ? plan.format->edit(plan.content, report) : plan.format->write(plan.content, report);
    if (!plan.isGzipped)
        return bytes;
    if (text && !text->gzipped().empty() && text->unpack()->text() == bytes)
        return std::string(text->gzipped());
    return gzipped(bytes, report);
}

// Runs planning or writing; any exception becomes one line about the file.
template <class Work> auto guarded(const SavePlan& plan, Work work) {
    try {
        return work();
    } catch (const SaveError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw plan.noMemory; // NOLINT: a copy, which needs none
    } catch (const std::exception& error) {
        SaveReport(plan.path).refuse(std::string("cannot be saved: ") + error.what(),
                                     savableFiles());
    }
}

// What was at the path of a plan is gone from there: entries of another file, or these ones where
// only a part of them was saved. What moved to the file is in no other any more. Entries that are
// closed may come back.
void leaveOldFiles(const SavePlan& plan) {
    std::vector<std::uint32_t> moved =
        plan.content.isInPart ? std::vector<std::uint32_t>() : plan.items;
    std::ranges::sort(moved);
    std::unordered_set<const FileOnDisk*> seen;
    for (const KnownOrigin& origin : knownOrigins()) {
        const auto source = std::static_pointer_cast<EntrySource>(origin.source);
        FileOnDisk* const file = source ? source->file.get() : nullptr;
        if (!file || !seen.insert(file).second)
            continue;
        const bool isThis = file == plan.file.get();
        if (isThis ? plan.content.isInPart : isSameFile(origin.path, plan.path))
            file->entries.clear();
        else if (!isThis)
            std::erase_if(file->entries, [&moved](std::uint32_t id) {
                return std::ranges::binary_search(moved, id);
            });
    }
}

// Tells items that they are in the file of the plan.
void moveToFile(const SavePlan& plan) {
    std::vector<unsigned int> ids = plan.items;
    std::ranges::sort(ids);
    plan.file->entries = ids;
    TAVIK::Compound* const space = TAVIK::Space::instance();
    for (TAVIK::Compound** it = space->ChildBegin(); it != space->ChildEnd(); ++it) {
        if (!*it || !std::ranges::binary_search(ids, (*it)->GetId()))
            continue;
        auto source = entrySourceOf(*it);
        if (!source)
            source = std::make_shared<EntrySource>();
        if (source->file != plan.file)
            setOrigin(*it, plan.path, source);
        source->file = plan.file;
        setDataSaved(*it);
    }
}

} // namespace

std::string savableFiles() {
    return acceptedEndings([](const FileFormat*) { return true; });
}

std::vector<TAVIK::Compound*> entriesOfFile(TAVIK::Compound* entry) {
    const auto source = entrySourceOf(entry);
    if (!source)
        return {entry};
    std::vector<TAVIK::Compound*> entries;
    TAVIK::Compound* const space = TAVIK::Space::instance();
    std::copy_if(space->ChildBegin(), space->ChildEnd(), std::back_inserter(entries),
                 [&source](const TAVIK::Compound* item) {
                     const auto other = item ? entrySourceOf(item) : nullptr;
                     return other && other->file == source->file;
                 });
    return entries;
}

bool isUnsaved(const TAVIK::Compound* entry) {
    const auto source = entrySourceOf(entry);
    return hasUnsavedData(entry) ||
           (source && source->file &&
            !std::ranges::binary_search(source->file->entries, entry->GetId()));
}

SavePlanPtr planSaving(std::span<TAVIK::Compound* const> items, const std::string& path,
                       const SaveOptions& options) {
    SavePlanPtr plan(new SavePlan(path));
    guarded(*plan, [&] {
        SaveReport report(path);
        plan->isGzipped = endsWith(path, packedEnding);
        plan->format = &formatOf(*plan, report);
        plan->content = readItems(items, options, report);
        checkContent(*plan, report);
        plan->file = fileOf(items, path);
        if (!plan->file)
            plan->file = std::make_shared<FileOnDisk>();
        else if (!options.replaceChanged)
            plan->expected = plan->file->stamp;
        for (const TAVIK::Compound* item : items)
            plan->items.push_back(item->GetId());
        if (!plan->content.isInPart && !options.dropClosed)
            checkClosed(*plan, report);
        plan->remarks = report.remarks();
    });
    return plan;
}

std::vector<std::string> writePlan(SavePlan& plan, const Progress& progress, std::stop_token stop) {
    return guarded(plan, [&] {
        SaveReport report(plan.path, progress, std::move(stop));
        const SourceText* const text = textToEdit(plan);
        // Unpacked meanwhile, where there can be another thread: each takes a fifth of the time.
        auto unpacking = std::async([text] { return text ? text->unpack() : nullptr; });
        settleBonds(plan.content,
                    !text                    ? BondRecords::Written
                    : plan.format->addsBonds ? BondRecords::Added
                                             : BondRecords::Kept,
                    report);
        const std::shared_ptr<const Bytes> unpacked = unpacking.get();
        const std::string bytes = bytesOf(plan, report);
        std::vector<std::string> remarks = plan.remarks;
        remarks.insert(remarks.end(), report.remarks().begin(), report.remarks().end());
        plan.written = replaceFile(report, bytes, plan.expected); // Last: nothing fails afterwards.
        return remarks;
    });
}

std::size_t atomCount(const SavePlan& plan) {
    std::size_t count = 0;
    for (const SavedStructure& structure : plan.content.structures)
        for (const SavedModel& model : structure.models)
            count += model.atoms.size();
    return count;
}

void markSaved(const SavePlan& plan) {
    if (!plan.written.isKnown())
        return;
    plan.file->stamp = plan.written;
    guarded(plan, [&plan] {
        leaveOldFiles(plan);
        if (!plan.content.isInPart)
            moveToFile(plan);
    });
}

std::vector<std::string> saveFile(std::span<TAVIK::Compound* const> items, const std::string& path,
                                  const SaveOptions& options) {
    const SavePlanPtr plan = planSaving(items, path, options);
    std::vector<std::string> remarks = writePlan(*plan);
    markSaved(*plan);
    return remarks;
}

} // namespace memory_host
