#include "SearchQueue.h"

#include <algorithm>
#include <exception>

namespace {

// So many batches are searched before the second thread is worth its start.
constexpr std::size_t fewBatches = 8;

// How often a value is looked at before the thread sleeps until it changes: for some tens of
// microseconds. A batch takes about as long, and to wake up would take longer.
constexpr int looks = 100;

template <class Value> void waitForChange(const std::atomic<Value>& value, Value from) {
    for (int i = 0; i != looks; ++i) {
        if (value.load(std::memory_order_acquire) != from)
            return;
        std::this_thread::yield();
    }
    value.wait(from, std::memory_order_acquire);
}

} // namespace

SearchQueue::SearchQueue(const RadiusSearch& search, std::size_t mostPoints) : m_search(search) {
    for (Batch& batch : m_batches) {
        batch.points.reserve(mostPoints);
        batch.found.reserve(mostPoints);
        batch.inReach.reserve(mostPoints);
        batch.near.reserve(mostPoints);
    }
}

SearchQueue::~SearchQueue() {
    if (!m_thread.joinable())
        return;
    m_isEnding = true;
    ++m_news;
    m_news.notify_one();
    m_thread.join();
}

void SearchQueue::push() {
    m_batches[number()].state.store(State::Pushed, std::memory_order_release);
    if (++m_pushed == fewBatches)
        startThread();
    m_news.fetch_add(1, std::memory_order_release);
    m_news.notify_one();
}

bool SearchQueue::isReady() const {
    return m_batches[oldest()].state.load(std::memory_order_acquire) == State::Done;
}

std::span<const std::uint32_t> SearchQueue::pop() {
    Batch& batch = m_batches[oldest()];
    if (!searchIfPushed(batch))
        waitForChange(batch.state, State::Begun);
    ++m_popped;
    batch.state.store(State::Free, std::memory_order_relaxed);
    return batch.found;
}

// Both loops are branchless: half of their branches would be mispredicted.
void SearchQueue::search(Batch& batch) const {
    batch.found.resize(batch.points.size());
    batch.inReach.resize(batch.points.size());
    std::size_t count = 0;
    for (std::uint32_t i = 0; i != batch.points.size(); ++i) {
        batch.found[count] = i;
        batch.inReach[count] = batch.points[i];
        count += m_search.isInReach(batch.points[i]) ? 1 : 0;
    }
    batch.inReach.resize(count);
    m_search.search(batch.inReach, batch.near);
    count = 0;
    for (std::size_t i = 0; i != batch.inReach.size(); ++i) {
        batch.found[count] = batch.found[i];
        count += batch.near[i];
    }
    batch.found.resize(count);
    batch.points.clear();
}

bool SearchQueue::searchIfPushed(Batch& batch) {
    State state = State::Pushed;
    if (!batch.state.compare_exchange_strong(state, State::Begun, std::memory_order_acquire))
        return false;
    search(batch);
    batch.state.store(State::Done, std::memory_order_release);
    batch.state.notify_one();
    return true;
}

// Without a thread all is searched by pop().
void SearchQueue::startThread() {
    if (std::thread::hardware_concurrency() < 2)
        return;
    try {
        m_thread = std::thread([this] { serve(); });
    } catch (const std::exception&) {
    }
}

void SearchQueue::serve() {
    std::uint32_t news = m_news.load(std::memory_order_acquire);
    for (std::size_t at = 0; !m_isEnding;) {
        const bool isAny = std::any_of(m_batches.begin(), m_batches.end(), [&](const Batch&) {
            return searchIfPushed(m_batches[at++ % batches]);
        });
        if (!isAny)
            waitForChange(m_news, news);
        news = m_news.load(std::memory_order_acquire);
    }
}
