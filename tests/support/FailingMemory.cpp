#include "FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

// What the toolkit allocates while it fails it may lose: that is not what these tests look for.
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#else
static void __lsan_disable() {} // NOLINT: the sanitizer's names
static void __lsan_enable() {}  // NOLINT
#endif

namespace {

constexpr int unlimited = std::numeric_limits<int>::max();

std::atomic<bool> armed = false;
std::atomic<std::size_t> smallestBlock = 0;
std::atomic<int> left = 0;
std::atomic<int> toRefuse = 0;
std::atomic<int> refused = 0;

bool isRefused(std::size_t size) {
    if (!armed || size < smallestBlock)
        return false;
    if (left > 0) {
        --left;
        return false;
    }
    if (toRefuse == 0)
        return false;
    if (toRefuse != unlimited)
        --toRefuse;
    ++refused;
    return true;
}

} // namespace

FailingMemory::FailingMemory(int granted, int refuse, std::size_t smallest) {
    smallestBlock = smallest;
    left = granted;
    toRefuse = refuse;
    refused = 0;
    armed = true;
    __lsan_disable();
}

FailingMemory::~FailingMemory() {
    __lsan_enable();
    armed = false;
}

int FailingMemory::refusals() {
    return refused;
}

void* operator new(std::size_t size) {
    if (!isRefused(size))
        if (void* block = std::malloc(size ? size : 1))
            return block;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return isRefused(size) ? nullptr : std::malloc(size ? size : 1);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
