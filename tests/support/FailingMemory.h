// Memory that runs out on demand: blocks from a certain size on are refused by the C++ allocator of
// the whole program while a FailingMemory lives. What a test builds with a very long name then
// fails in known places.
#pragma once

#include <cstddef>

class FailingMemory {
public:
    static constexpr std::size_t largeBlock = 10'000;

    /// Lets `granted` blocks of at least `smallest` bytes pass, then refuses `refused` of them.
    FailingMemory(int granted, int refused, std::size_t smallest = largeBlock);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// How many were refused until now.
    static int refusals();
};
