#include "Gathering.h"

#include "LookRuns.h"
#include "MadeItems.h"
#include "Space.h"
#include "files/EntrySource.h"
#include "files/Saving.h"
#include "items/DataVersion.h"
#include "items/Publishing.h"
#include "items/Selection.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace memory_host {

void JournalStateDeleter::operator()(JournalState* state) const {
    delete state;
}

class JournalGathering::Walk {
public:
    explicit Walk(const std::set<std::string>& written);

    /// Goes on with some hundred items; returns whether those were the last.
    bool step();
    JournalStatePtr take() { return std::move(m_state); }

private:
    /// Children that are still to be visited.
    struct Rest {
        Compound** next;
        Compound** end;
    };

    void visit(Compound& item);
    void visitRead(const Compound& item, const HostItem& record);
    void writeEntry(const Compound& item, const HostItem& record);
    std::uint32_t numberOf(const std::shared_ptr<FileOnDisk>& file);
    void writeReadings();
    bool finish();

    const std::set<std::string>& m_written;
    JournalStatePtr m_state;
    MadeItems m_made;
    LookRuns m_looks;
    std::vector<Rest> m_rests;
    std::uint32_t m_readBegin = 0; ///< identifiers of what the entry's file gave
    std::uint32_t m_readEnd = 0;
    std::uint64_t m_readItems = 0; ///< that are there
    std::uint64_t m_givenItems = 0;
    std::uint32_t m_lastModel = 0;
    /// With the source of one of its entries.
    std::unordered_map<const FileReading*, std::shared_ptr<const EntrySource>> m_readings;
    std::unordered_map<const FileOnDisk*, std::uint32_t> m_files;
};

namespace {

// How many items are visited between two looks at the clock.
constexpr int itemsAtOnce = 256;

void writeFile(JournalBytes& bytes, const FileOnDisk& file) {
    writeStamp(bytes, file.stamp);
    bytes.number(file.entries.size());
    std::uint32_t last = 0;
    for (const std::uint32_t id : file.entries)
        bytes.difference(std::int64_t{id} - std::int64_t{std::exchange(last, id)});
}

// The text of a structure is in the journal; the values of a map are in its file alone.
bool canBeReadAgain(const EntrySource& source) {
    const FileReading* const reading = source.reading.get();
    return reading &&
           (source.text || (reading->stamp.isKnown() && stampOf(reading->path) == reading->stamp));
}

bool isShownInPart(const GridItem& grid) {
    return grid.bounds() !=
           std::array<int, 6>{0, 0, 0, grid.m_points[0], grid.m_points[1], grid.m_points[2]};
}

// Rises when items, meshes or values go or move, to which a walk may hold pointers.
std::uint64_t changesOfAddresses() {
    return selectionChanges + SurfaceItem::lastMeshVersion + GridItem::valuesChanges;
}

} // namespace

JournalGathering::Walk::Walk(const std::set<std::string>& written)
    : m_written(written), m_state(new JournalState), m_made(*m_state, written),
      m_looks(m_state->at(JournalSection::Looks)) {
    TAVIK::Space* const space = TAVIK::Space::instance();
    m_rests.push_back({space->ChildBegin(), space->ChildEnd()});
}

bool JournalGathering::Walk::step() {
    if (m_rests.empty())
        return m_made.step() && finish();
    for (int count = itemsAtOnce; count != 0 && !m_rests.empty();) {
        Rest& rest = m_rests.back();
        if (rest.next == rest.end) {
            m_rests.pop_back();
            continue;
        }
        if (Compound* const item = *rest.next++; item) {
            visit(*item);
            --count;
        }
    }
    return false;
}

void JournalGathering::Walk::visit(Compound& item) {
    HostItem& record = HostItem::of(&item);
    prefetchAfter(&record);
    if (m_rests.size() == 1)
        writeEntry(item, record);
    if (record.id >= m_readBegin && record.id < m_readEnd)
        visitRead(item, record);
    else
        m_made.add(item, record);
    m_looks.add(record);
    if (record.kind == Kind::Residue && record.model > 1) {
        JournalBytes& models = m_state->at(JournalSection::Models);
        models.difference(std::int64_t{record.id} -
                          std::int64_t{std::exchange(m_lastModel, record.id)});
        models.number(record.model);
    }
    if (record.kind == Kind::Grid && isShownInPart(static_cast<const GridItem&>(item))) {
        JournalBytes& bounds = m_state->at(JournalSection::Bounds);
        bounds.number(record.id);
        for (const int bound : static_cast<const GridItem&>(item).bounds())
            bounds.difference(bound);
    }
    if (record.isHolder() && record.asHolder().childCount() != 0)
        m_rests.push_back({record.asHolder().childBegin(), record.asHolder().childEnd()});
}

void JournalGathering::Walk::visitRead(const Compound& item, const HostItem& record) {
    ++m_readItems;
    if (record.kind == Kind::Atom && record.has(HostItem::Edited))
        m_made.addChanged(static_cast<const AtomItem&>(item));
    else if (record.kind == Kind::Grid && static_cast<const GridItem&>(item).m_valuesVersion != 0)
        m_made.addChanged(static_cast<const GridItem&>(item));
}

void JournalGathering::Walk::writeEntry(const Compound& item, const HostItem& record) {
    const auto source = std::static_pointer_cast<EntrySource>(sourceOf(&item));
    const bool isChanged = hasUnsavedData(&item);
    m_readBegin = m_readEnd = 0;
    if (source && canBeReadAgain(*source)) {
        const FileReading& reading = *source->reading;
        m_readBegin = reading.firstItem;
        m_readEnd = reading.firstItem + reading.itemCount;
        const bool isNew = m_readings.try_emplace(&reading, source).second;
        m_givenItems += isNew ? reading.itemCount : 0;
    }
    m_state->isAsRead = m_state->isAsRead && !isUnsaved(&item);
    JournalBytes& entries = m_state->at(JournalSection::Entries);
    entries.number(record.id);
    entries.number(m_made.texts().number(record.name));
    entries.text(originPath(&item));
    entries.number(source ? numberOf(source->file) : 0);
    entries.byte(isChanged ? 1 : 0);
}

// Files are numbered from 1 as they come.
std::uint32_t JournalGathering::Walk::numberOf(const std::shared_ptr<FileOnDisk>& file) {
    if (!file)
        return 0;
    const auto [known, isNew] =
        m_files.try_emplace(file.get(), static_cast<std::uint32_t>(m_files.size() + 1));
    if (isNew)
        writeFile(m_state->at(JournalSection::Files), *file);
    return known->second;
}

void JournalGathering::Walk::writeReadings() {
    JournalBytes& bytes = m_state->at(JournalSection::Readings);
    for (const auto& [reading, source] : m_readings) {
        // The file itself may be saved, or changed, at any time.
        const bool hasText = source->text != nullptr;
        bytes.text(reading->path);
        writeStamp(bytes, reading->stamp);
        bytes.number(reading->firstItem);
        bytes.number(reading->itemCount);
        bytes.byte(hasText ? 1 : 0);
        if (!hasText)
            continue;
        const std::string folder = textFolder(reading->firstItem);
        m_state->needed.insert(folder);
        if (!m_written.contains(folder))
            m_state->besides.push_back(
                {folder, {}, source->text, std::string(fileNameOf(reading->path))});
    }
}

bool JournalGathering::Walk::finish() {
    m_looks.finish();
    writeReadings();
    const auto isEmpty = [this](JournalSection section) {
        return m_state->at(section).size() == 0;
    };
    m_state->isAsRead = m_state->isAsRead && m_looks.areAllUsual() && m_readItems == m_givenItems &&
                        isEmpty(JournalSection::Atoms) && isEmpty(JournalSection::Values) &&
                        isEmpty(JournalSection::Models) && isEmpty(JournalSection::Bounds);
    return true;
}

JournalGathering::JournalGathering(const std::set<std::string>& written)
    : m_walk(std::make_unique<Walk>(written)), m_changes(changesOfAddresses()) {}

JournalGathering::~JournalGathering() = default;

JournalGathering::Progress JournalGathering::advance(std::chrono::microseconds time) {
    if (publishing().changing || m_changes != changesOfAddresses())
        return Progress::Disturbed;
    const auto end = std::chrono::steady_clock::now() + time;
    do
        if (m_walk->step())
            return Progress::Done;
    while (std::chrono::steady_clock::now() < end);
    return Progress::More;
}

JournalStatePtr JournalGathering::take() {
    return m_walk->take();
}

} // namespace memory_host
