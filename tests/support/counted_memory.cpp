#include "tests/support/counted_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace orvane::test {
namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> peak{0};

// The size stands ahead of each block, and costs no more than an allocator's own record.
constexpr std::size_t kAhead = 16;

}  // namespace

std::size_t memoryInUse() { return inUse; }
void resetPeak() { peak = inUse.load(); }
std::size_t peakMemory() { return peak; }

void* countedAllocate(std::size_t size) {
    auto* const block = static_cast<char*>(std::malloc(size + kAhead));
    if (block == nullptr) return nullptr;
    *reinterpret_cast<std::size_t*>(block) = size;
    const std::size_t now = inUse.fetch_add(size + kAhead) + size + kAhead;
    std::size_t most = peak.load();
    while (now > most && !peak.compare_exchange_weak(most, now)) {
    }
    return block + kAhead;
}

void countedFree(void* memory) {
    if (memory == nullptr) return;
    char* const block = static_cast<char*>(memory) - kAhead;
    inUse -= *reinterpret_cast<std::size_t*>(block) + kAhead;
    std::free(block);
}

}  // namespace orvane::test

// Every form of its own: the sanitizers' do not call each other as the library's do.
void* operator new(std::size_t size) {
    if (void* const memory = orvane::test::countedAllocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return orvane::test::countedAllocate(size);
}
void operator delete(void* memory) noexcept { orvane::test::countedFree(memory); }
void operator delete(void* memory, std::size_t) noexcept { orvane::test::countedFree(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    orvane::test::countedFree(memory);
}
void operator delete[](void* memory) noexcept { orvane::test::countedFree(memory); }
void operator delete[](void* memory, std::size_t) noexcept { orvane::test::countedFree(memory); }
