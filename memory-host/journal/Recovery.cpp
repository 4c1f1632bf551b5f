#include "Recovery.h"

#include "DataMaker.h"
#include "DataPointBase.h"
#include "JournalFiles.h"
#include "JournalFolder.h"
#include "MakingAgain.h"
#include "RecoveredItems.h"
#include "Space.h"
#include "files/EntryNames.h"
#include "files/FileReport.h"
#include "items/Arrivals.h"
#include "items/DataVersion.h"
#include "items/Publishing.h"
#include "items/Recording.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace memory_host {

namespace {

// After the machine was started anew, the same disk may have another number.
bool isSame(const FileStamp& now, FileStamp before) {
    before.device = now.device;
    return now.isKnown() && now == before;
}

// The stamp of a file, with the number that its disk has now.
FileStamp renumbered(const FileStamp& before, const FileStamp& now) {
    return isSame(now, before) ? now : before;
}

// As part of a line for the user.
std::string shown(std::string_view path) {
    constexpr std::size_t longest = 4096;
    return oneLine(path, longest);
}

std::shared_ptr<EntrySource> entrySourceOf(const Compound* item) {
    return std::static_pointer_cast<EntrySource>(sourceOf(item));
}

bool isEntry(const Compound* item) {
    return item && HostItem::of(item).parent->kind == Kind::Space;
}

// Keeps in which file an entry is.
void setFile(const Compound* entry, const std::string& path, std::shared_ptr<FileOnDisk> file) {
    auto source = entrySourceOf(entry);
    if (!source)
        source = std::make_shared<EntrySource>();
    source->file = std::move(file);
    setOrigin(entry, path, source);
}

// Whether the data of an entry as they were read are those in its file.
bool isFileAsRead(const EntrySource* source) {
    return source && source->file && source->reading &&
           source->file->stamp == source->reading->stamp;
}

// Opening has numbered the names anew. They are what they were, but for those that others have.
void keepApart(Arrangement& recovered, const Arrangement& others) {
    const auto have = [](const Arrangement& items) {
        std::unordered_set<std::string> names;
        for (const TopLevel& top : items)
            names.insert(top.name.text());
        return names;
    };
    const std::unordered_set<std::string> taken = have(others);
    std::unordered_set<std::string> given = have(recovered);
    given.insert(taken.begin(), taken.end());
    EntryNames names(given);
    for (TopLevel& top : recovered) {
        if (!taken.contains(top.name.text()))
            continue;
        std::string name = HostItem::of(top.item).name.text();
        while (!given.insert(name).second)
            name = names.take(top.name.text(), {std::string()}).front();
        top.name = Name(name);
    }
}

} // namespace

class JournalRecovery::Work {
public:
    explicit Work(std::string folder)
        : m_folder(std::move(folder)),
          m_content(readFramed(FileReport(journalIn(m_folder)), readJournal)),
          m_opened(m_content.readings.size()) {}

    const JournalContent& content() const { return m_content; }
    std::string contentPath(std::size_t file) const;
    void setOpened(std::size_t file);
    Outcome apply();

private:
    RecoveredItems findItems(Outcome& outcome) const;
    void change(RecoveredItems& items, Outcome& outcome);
    bool destroyGone(const RecoveredItems& items) const;
    void arrange(const RecoveredItems& items) const;
    void giveFiles(const RecoveredItems& items, std::vector<std::string>& lines) const;
    std::vector<std::shared_ptr<FileOnDisk>> files(const RecoveredItems& items,
                                                   std::vector<std::string>& lines) const;
    void markUnsaved(const RecoveredItems& items) const;
    void restoreReadings() const;

    std::string m_folder;
    JournalContent m_content;
    std::vector<std::shared_ptr<FileReading>> m_opened;
};

std::string JournalRecovery::Work::contentPath(std::size_t file) const {
    const JournalContent::Reading& reading = m_content.readings[file];
    std::string path(reading.path);
    if (isSame(stampOf(path), reading.stamp))
        return path;
    if (!reading.hasText)
        return {};
    return m_folder + '/' + textFolder(reading.firstItem) + '/' +
           std::string(fileNameOf(reading.path));
}

void JournalRecovery::Work::setOpened(std::size_t file) {
    TAVIK::Space* const space = TAVIK::Space::instance();
    const auto source = space->HasChildren() ? entrySourceOf(space->ChildEnd()[-1]) : nullptr;
    m_opened[file] = source ? source->reading : nullptr;
}

RecoveredItems JournalRecovery::Work::findItems(Outcome& outcome) const {
    RecoveredItems items(m_content);
    for (std::size_t i = 0; i != m_opened.size(); ++i) {
        if (m_opened[i] && items.addReading(i, *m_opened[i]))
            continue;
        outcome.isWhole = false;
        outcome.lines.push_back(shown(m_content.readings[i].path) +
                                (m_opened[i]
                                     ? ": its content is not what it was; the changes to it "
                                       "are not brought back"
                                     : ": the changes to it are not brought back"));
    }
    items.settle();
    return items;
}

bool JournalRecovery::Work::destroyGone(const RecoveredItems& items) const {
    const std::vector<Compound*> gone = items.gone();
    for (Compound* const item : gone)
        TAVIK::DataMaker::Destroy(item);
    return !gone.empty();
}

void JournalRecovery::Work::change(RecoveredItems& items, Outcome& outcome) {
    LostItems lost{};
    std::vector<std::string> unchanged;
    bool destroys = false;
    {
        const DataPointBase guard(nullptr, Publisher::Update, "Recovered changes");
        if (!guard.m_good) {
            outcome.lines.emplace_back("The changes are not brought back: another change is under "
                                       "way");
            return;
        }
        changeAgain(m_content, m_folder, items, unchanged);
        makeAgain(m_content, m_folder, items, lost);
        giveFiles(items, outcome.lines);
        destroys = destroyGone(items);
        lookAgain(m_content, items);
        markUnsaved(items);
        arrange(items);
        outcome.hasEntries = std::ranges::any_of(
            m_content.entries, [&](const auto& entry) { return isEntry(items.at(entry.id)); });
        if (recording.step && recording.step->hasFailed())
            throw std::bad_alloc();
        outcome.isDone = true;
    }
    // As when steps are done again: who shows the data is told of all that happened, and learns of
    // other names and another order as of new items.
    if (destroys)
        tellAll(nullptr, Publisher::Delete);
    tellAll(nullptr, Publisher::Add);
    outcome.isWhole = outcome.isWhole && unchanged.empty();
    std::ranges::move(unchanged, std::back_inserter(outcome.lines));
    const std::string missing = describe(lost);
    if (!missing.empty()) {
        outcome.isWhole = false;
        outcome.lines.push_back("Not brought back: " + missing);
    }
}

// What is open otherwise stays before what comes back.
void JournalRecovery::Work::arrange(const RecoveredItems& items) const {
    Holder& space = HostItem::of(TAVIK::Space::instance()).asHolder();
    Arrangement recovered;
    std::unordered_set<const Compound*> known;
    for (const JournalContent::Entry& entry : m_content.entries)
        if (Compound* const item = items.at(entry.id); isEntry(item) && known.insert(item).second)
            recovered.push_back({item, 0, Name::component(m_content.text(entry.name))});
    Arrangement order = arrangementOf(space);
    std::erase_if(order, [&known](const TopLevel& top) { return known.contains(top.item); });
    keepApart(recovered, order);
    std::ranges::move(recovered, std::back_inserter(order));
    rearrange(space, std::move(order));
}

std::vector<std::shared_ptr<FileOnDisk>>
JournalRecovery::Work::files(const RecoveredItems& items, std::vector<std::string>& lines) const {
    std::vector<std::shared_ptr<FileOnDisk>> all(m_content.files.size() + 1);
    for (const JournalContent::Entry& entry : m_content.entries) {
        std::shared_ptr<FileOnDisk>& file = all[entry.file];
        if (entry.file == 0 || file || !items.at(entry.id))
            continue;
        const std::string path(entry.path);
        const FileStamp now = stampOf(path);
        const JournalContent::File& known = m_content.files[entry.file - 1];
        const FileStamp& before = known.stamp;
        file = std::make_shared<FileOnDisk>(FileOnDisk{renumbered(before, now), {}});
        for (const std::uint32_t id : known.entries)
            file->entries.push_back(items.identifierNow(id));
        std::ranges::sort(file->entries);
        if (now != file->stamp && before.isKnown())
            lines.push_back(shown(path) +
                            (now.isKnown() ? " is another than when the journal was written"
                                           : " is not there any more") +
                            "; what is open is as it was then");
    }
    return all;
}

// What is gone comes back when this is taken back, and is in its file then as the others are.
void JournalRecovery::Work::giveFiles(const RecoveredItems& items,
                                      std::vector<std::string>& lines) const {
    const std::vector<std::shared_ptr<FileOnDisk>> all = files(items, lines);
    std::vector<bool> areGiven(all.size());
    for (const JournalContent::Entry& entry : m_content.entries) {
        const std::shared_ptr<FileOnDisk>& file = all[entry.file];
        const std::string path(entry.path);
        if (file && !areGiven[entry.file])
            for (const std::uint32_t id : m_content.files[entry.file - 1].entries)
                if (Compound* const item = items.given(id); isEntry(item))
                    setFile(item, path, file);
        areGiven[entry.file] = true;
        if (Compound* const item = items.at(entry.id); isEntry(item) && !path.empty())
            setFile(item, path, file);
    }
}

// Where the file is not as it was read, that is not saved either when all this is taken back.
void JournalRecovery::Work::markUnsaved(const RecoveredItems& items) const {
    for (const JournalContent::Entry& entry : m_content.entries) {
        Compound* const item = items.at(entry.id);
        if (!isEntry(item))
            continue;
        const auto source = entrySourceOf(item);
        const bool isInFile = !entry.isUnsaved && source && source->file &&
                              stampOf(std::string(entry.path)) == source->file->stamp;
        const bool isUnsaved = entry.isUnsaved || hasUnsavedData(item);
        if (isInFile)
            setDataSaved(item);
        else if (isUnsaved && !isFileAsRead(source.get()))
            setDataUnsaved(item);
        else if (isUnsaved && !hasUnsavedData(item) && item->HasChildren())
            noteDataChange(HostItem::of(*item->ChildBegin()));
    }
}

// The text in the journal is that of a file. What is saved next, and journalled, goes by that, also
// where the changes are not brought back.
void JournalRecovery::Work::restoreReadings() const {
    std::unordered_map<const FileReading*, bool> areAsRead;
    for (std::size_t i = 0; i != m_opened.size(); ++i) {
        if (!m_opened[i])
            continue;
        const JournalContent::Reading& before = m_content.readings[i];
        FileReading& reading = *m_opened[i];
        reading.path = before.path;
        const FileStamp now = stampOf(reading.path);
        reading.stamp = renumbered(before.stamp, now);
        areAsRead[&reading] = reading.stamp == now;
    }
    TAVIK::Space* const space = TAVIK::Space::instance();
    for (Compound** entry = space->ChildBegin(); entry != space->ChildEnd(); ++entry) {
        const auto source = entrySourceOf(*entry);
        const auto opened = areAsRead.find(source ? source->reading.get() : nullptr);
        if (opened == areAsRead.end())
            continue;
        const FileReading& reading = *source->reading;
        source->file->stamp = reading.stamp;
        if (!opened->second)
            source->file->entries.clear();
        setOrigin(*entry, reading.path, source);
    }
}

JournalRecovery::Outcome JournalRecovery::Work::apply() {
    Outcome outcome;
    try {
        outcome.isWhole = true;
        restoreReadings();
        RecoveredItems items = findItems(outcome);
        change(items, outcome);
    } catch (const std::bad_alloc&) {
        outcome = {};
        outcome.lines.emplace_back("There is not enough memory to bring back the changes");
    }
    outcome.isWhole = outcome.isWhole && outcome.isDone;
    return outcome;
}

JournalRecovery::JournalRecovery(const std::string& folder) {
    const FileReport report(folder);
    try {
        m_work = std::make_unique<Work>(folder);
    } catch (const std::bad_alloc&) {
        report.refuseForMemory();
    }
}

JournalRecovery::~JournalRecovery() = default;

std::vector<std::string> JournalRecovery::entries() const {
    const JournalContent& content = m_work->content();
    std::vector<std::string> names;
    std::unordered_set<std::string_view> seen;
    for (const JournalContent::Entry& entry : content.entries)
        if (const std::string_view name =
                entry.path.empty() ? content.text(entry.name) : fileNameOf(entry.path);
            seen.insert(name).second)
            names.push_back(shown(name));
    return names;
}

std::size_t JournalRecovery::fileCount() const {
    return m_work->content().readings.size();
}

std::string JournalRecovery::path(std::size_t file) const {
    return shown(m_work->content().readings[file].path);
}

std::string JournalRecovery::contentPath(std::size_t file) const {
    return m_work->contentPath(file);
}

void JournalRecovery::setOpened(std::size_t file) {
    m_work->setOpened(file);
}

JournalRecovery::Outcome JournalRecovery::apply() {
    return m_work->apply();
}

} // namespace memory_host
