#pragma once

// Counters in shared memory. The application, the squatter and the loggers are processes of this
// program in another mode; the first two count there what they read.

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "platform/handles.h"

namespace orvane::soak {

// What the application, or the squatter instead of it, has read. The counters continue when a new
// process takes over.
struct Counts {
    std::atomic<std::uint32_t> hellos;      // the squatter: clients taken
    std::atomic<std::uint32_t> events;      // read and understood
    std::atomic<std::uint32_t> responses;   // the same
    std::atomic<std::uint32_t> unreadable;  // messages that were not whole
    std::atomic<std::uint32_t> lists;       // CleanTracks events, and what was in them:
    std::atomic<std::uint32_t> tracks;
    std::atomic<std::uint32_t> tracksHash;  // of all paths in their order
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

// One step of that hash (FNV-1a over the path's UTF-16 units).
std::uint32_t hashPath(std::uint32_t hash, const wchar_t* path);

// Opens or creates the shared memory of that name.
class SharedCounts {
public:
    explicit SharedCounts(const std::wstring& name);
    ~SharedCounts();
    SharedCounts(const SharedCounts&) = delete;
    SharedCounts& operator=(const SharedCounts&) = delete;
    Counts* operator->() const { return m_counts; }

private:
    UniqueHandle m_section;
    Counts* m_counts;
};

// The modes of this program. They return only after an error.
int runApplication(const std::wstring& counts, bool deaf);
int runSquatter(const std::wstring& counts);
int runLogger(unsigned number);

}  // namespace orvane::soak
