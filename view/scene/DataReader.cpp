#include "DataReader.h"

#include "InPieces.h"
#include "Space.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

namespace view {

using TAVIK::Compound;

namespace {

// In a step, which takes far less than a millisecond.
constexpr std::size_t itemsAStep = 2048;
// Less is put together at once.
constexpr std::size_t manyItems = 20'000;

Collected collected(DataWalk& walk, const DataReader::Digest& digest) {
    Collected collected = walk.finish();
    if (digest)
        digest(collected.contents, collected.marks);
    return collected;
}

} // namespace

DataReader::DataReader(std::function<void()> gone) : m_gone(std::move(gone)) {}

DataReader::~DataReader() = default;

void DataReader::giveUp() {
    m_looks.reset();
    m_walk = nullptr;
    m_isJoining = false;
}

void DataReader::begin(What what, Digest digest) {
    giveUp();
    m_digest = std::move(digest);
    if (what == What::Looks && !m_isStale)
        m_looks.emplace(m_snapshot, m_items, m_bonds);
    else
        m_walk = std::make_shared<DataWalk>(TAVIK::Space::instance());
}

DataReader::State DataReader::advance(std::chrono::microseconds time) {
    State state = State::Done;
    forAbout(time, [&] {
        state = step(false);
        return state == State::Due;
    });
    return state;
}

void DataReader::finish() {
    while (step(true) != State::Done) {
    }
}

void DataReader::read() {
    begin(What::Everything);
    finish();
}

void DataReader::refresh() {
    begin(What::Looks);
    finish();
}

DataReader::State DataReader::step(bool mayWait) {
    try {
        if (m_looks)
            return stepLooks();
        if (m_walk)
            return m_walk->advance(itemsAStep) ? State::Due : endWalk(mayWait);
        return m_isJoining ? endJoining(mayWait) : State::Done;
    } catch (...) {
        giveUp();
        throw;
    }
}

DataReader::State DataReader::stepLooks() {
    switch (m_looks->advance(itemsAStep)) {
    case LooksReading::State::Due:
        return State::Due;
    case LooksReading::State::Outdated:
        begin(What::Everything, std::move(m_digest));
        return State::Due;
    case LooksReading::State::Done:
        break;
    }
    m_looks->update(m_snapshot);
    m_looks.reset();
    return State::Done;
}

// The rest needs no item: where it takes long it is done on another thread.
DataReader::State DataReader::endWalk(bool mayWait) {
    if (!mayWait && m_walk->size() > manyItems) {
        // One that was given up is ended first; it began a whole walk ago.
        if (m_joined.valid() &&
            m_joined.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return State::Waiting;
        try {
            m_joined = std::async(std::launch::async, [walk = m_walk, digest = m_digest] {
                return collected(*walk, digest);
            });
            m_walk = nullptr;
            m_isJoining = true;
            return State::Waiting;
        } catch (const std::system_error&) {
            // There is no other thread.
        }
    }
    take(collected(*m_walk, m_digest));
    return State::Done;
}

DataReader::State DataReader::endJoining(bool mayWait) {
    if (!mayWait && m_joined.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return State::Waiting;
    take(m_joined.get());
    return State::Done;
}

void DataReader::take(Collected collected) {
    Snapshot next;
    next.contents = std::make_shared<const Contents>(std::move(collected.contents));
    next.marks = std::make_shared<const Marks>(std::move(collected.marks));
    next.selection = std::make_shared<const SelectionMarks>(std::move(collected.selection));
    next.generation = m_snapshot.generation + 1;
    // Nothing fails from here on: arrays of different readings would not fit each other.
    m_items = std::move(collected.items);
    m_bonds = std::move(collected.bonds);
    m_snapshot = std::move(next);
    m_isStale = false;
    giveUp();
}

Compound* DataReader::item(Id id, std::uint64_t generation) const {
    return id != noId && generation == m_snapshot.generation && itemOf(id) < m_items.size()
               ? m_items[itemOf(id)]
               : nullptr;
}

Id DataReader::id(const Compound* item) const {
    const auto found = std::find(m_items.begin(), m_items.end(), item);
    return item && found != m_items.end() ? idOf(static_cast<std::size_t>(found - m_items.begin()))
                                          : noId;
}

void DataReader::aboutToDestroy(Compound*) {
    if (m_isStale && !isReading())
        return;
    giveUp();
    m_isStale = true;
    m_items = {};
    m_bonds = {};
    if (m_gone)
        m_gone();
}

} // namespace view
