#pragma once

// What this program has asked of operator new, by counting it: link counted_memory.cpp. Libraries
// that take an allocator are given the two functions below. Any thread.

#include <cstddef>

namespace orvane::test {

[[nodiscard]] std::size_t memoryInUse();  // bytes
void resetPeak();
[[nodiscard]] std::size_t peakMemory();  // bytes, the most since resetPeak()

// Null when there is no more.
[[nodiscard]] void* countedAllocate(std::size_t size);
void countedFree(void* memory);

}  // namespace orvane::test
