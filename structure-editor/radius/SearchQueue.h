// Points that are searched in batches, on a second thread once there are many of them. Knows
// neither items nor widgets.
#pragma once

#include "RadiusSearch.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <thread>
#include <vector>

/// A ring of batches: its owner fills one with points while earlier ones are searched, and takes
/// them back in the order in which they were filled. Where a batch was not begun when it is wanted,
/// the owner's thread searches it: a second thread is a help, and never waited for in vain.
class SearchQueue {
public:
    /// How many batches there are.
    static constexpr std::size_t batches = 4;

    /// A queue for at most `mostPoints` in a batch. Nothing else allocates.
    SearchQueue(const RadiusSearch& search, std::size_t mostPoints);
    SearchQueue(const SearchQueue&) = delete;
    SearchQueue& operator=(const SearchQueue&) = delete;
    /// Ends the second thread.
    ~SearchQueue();

    /// The batch to be filled: the points that were added since the last push(), and its number,
    /// below `batches`. Not to be called while isFull().
    std::vector<Point>& points() { return m_batches[number()].points; }
    std::size_t number() const { return m_pushed % batches; }
    /// Hands the batch over to be searched.
    void push();

    bool isEmpty() const { return m_pushed == m_popped; }
    /// Whether all batches are handed over, and one is to be taken back first.
    bool isFull() const { return m_pushed - m_popped == batches; }
    /// Whether the oldest batch is searched; not to be called while isEmpty().
    bool isReady() const;
    /// Takes the oldest batch back, and searches or waits for it where it is not ready. Returns the
    /// indices of those of its points that lie within the radius of a centre, in rising order; the
    /// view is valid until the next push().
    std::span<const std::uint32_t> pop();
    /// The number of the batch that pop() takes back.
    std::size_t oldest() const { return m_popped % batches; }

private:
    enum class State : std::uint32_t { Free, Pushed, Begun, Done };
    struct Batch {
        std::vector<Point> points;
        std::vector<std::uint32_t> found; ///< indices of points
        std::vector<Point> inReach;       ///< the points that are searched
        std::vector<std::uint8_t> near;   ///< of each of them
        std::atomic<State> state = State::Free;
    };

    void search(Batch& batch) const;
    /// Searches a batch, unless the other thread has begun to. Returns whether it did.
    bool searchIfPushed(Batch& batch);
    void startThread();
    void serve();

    const RadiusSearch& m_search;
    std::array<Batch, batches> m_batches;
    std::size_t m_pushed = 0;
    std::size_t m_popped = 0;
    std::atomic<std::uint32_t> m_news = 0; ///< changes when there is something for the thread
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};
