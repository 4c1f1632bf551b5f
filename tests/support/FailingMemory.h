// Memory that runs out on demand: blocks from a certain size on are refused by the C++ allocator of
// the whole program while a FailingMemory lives. What a test builds with a very long name then
// fails in known places; or every single allocation of the project's own code can be made to fail.
#pragma once

#include <cstddef>

class FailingMemory {
public:
    static constexpr std::size_t largeBlock = 10'000;

    /// Whose blocks are counted and refused.
    enum class Of {
        Program, ///< everybody's
        /// Those that code of the project asks for, itself or through the standard library, outside
        /// of event loops that were started meanwhile (dialogs). The toolkit is left out: it ends
        /// the program when memory runs out in what it declares noexcept (the destructors and
        /// shared data of its own classes), and loses what it holds when it runs out elsewhere.
        OwnCode
    };

    /// Lets `granted` blocks of at least `smallest` bytes pass, then refuses `refused` of them.
    FailingMemory(int granted, int refused, std::size_t smallest = largeBlock, Of of = Of::Program);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// How many were refused until now.
    static int refusals();
};
