#include "FailingMemory.h"

#include <QThread>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <link.h>
#include <new>
#include <unwind.h>

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

bool ownCodeOnly = false;
Qt::HANDLE thread = nullptr;
int loopLevel = 0;

enum class Code { Own, Standard, Other };

// Where the code of the program and of the host's library stands, and that of the standard library.
struct CodeRange {
    std::uintptr_t begin;
    std::uintptr_t end;
    Code code;
};
std::array<CodeRange, 8> ranges;
std::size_t rangeCount = 0;

int addRanges(dl_phdr_info* info, std::size_t, void*) {
    const bool isProgram = info->dlpi_name[0] == '\0' && rangeCount == 0;
    const bool isOwn = isProgram || std::strstr(info->dlpi_name, "/libMemoryHost.so");
    if (!isOwn && !std::strstr(info->dlpi_name, "/libstdc++.so"))
        return 0;
    for (int i = 0; i != info->dlpi_phnum; ++i) {
        const auto& part = info->dlpi_phdr[i];
        if (part.p_type != PT_LOAD || !(part.p_flags & PF_X) || rangeCount == ranges.size())
            continue;
        const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
        ranges[rangeCount++] = {begin, begin + part.p_memsz, isOwn ? Code::Own : Code::Standard};
    }
    return 0;
}

Code codeAt(std::uintptr_t address) {
    for (std::size_t i = 0; i != rangeCount; ++i)
        if (address >= ranges[i].begin && address < ranges[i].end)
            return ranges[i].code;
    return Code::Other;
}

// The first caller that is not the standard library; the first of all are this file's functions.
struct Caller {
    std::uintptr_t from; ///< where operator new returns to: what is above was asked by it
    bool reached = false;
    Code code = Code::Other;
};

_Unwind_Reason_Code lookAtCaller(_Unwind_Context* context, void* out) {
    auto& caller = *static_cast<Caller*>(out);
    const std::uintptr_t address = _Unwind_GetIP(context);
    caller.reached = caller.reached || address == caller.from;
    if (!caller.reached)
        return _URC_NO_REASON;
    caller.code = codeAt(address);
    return caller.code == Code::Standard ? _URC_NO_REASON : _URC_END_OF_STACK;
}

bool isOwn(const void* from) {
    if (QThread::currentThreadId() != thread)
        return false;
    const auto address = reinterpret_cast<std::uintptr_t>(from); // NOLINT: addresses are compared
    Caller caller{address, false, codeAt(address)};
    if (caller.code == Code::Standard)
        _Unwind_Backtrace(lookAtCaller, &caller);
    return caller.code == Code::Own && QThread::currentThread()->loopLevel() == loopLevel;
}

bool isRefused(std::size_t size, const void* caller) {
    if (!armed || size < smallestBlock)
        return false;
    if (ownCodeOnly && !isOwn(caller))
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

void* grant(std::size_t size, const void* caller) {
    if (!isRefused(size, caller))
        if (void* block = std::malloc(size ? size : 1))
            return block;
    throw std::bad_alloc();
}

void* grantOrNull(std::size_t size, const void* caller) noexcept {
    return isRefused(size, caller) ? nullptr : std::malloc(size ? size : 1);
}

} // namespace

FailingMemory::FailingMemory(int granted, int refuse, std::size_t smallest, Of of) {
    smallestBlock = smallest;
    left = granted;
    toRefuse = refuse;
    refused = 0;
    ownCodeOnly = of == Of::OwnCode;
    if (ownCodeOnly) {
        thread = QThread::currentThreadId();
        loopLevel = QThread::currentThread()->loopLevel();
        if (rangeCount == 0)
            dl_iterate_phdr(addRanges, nullptr);
    }
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
    return grant(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size) {
    return grant(size, __builtin_return_address(0));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return grantOrNull(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return grantOrNull(size, __builtin_return_address(0));
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
