// A program of the same user that has the application's names, takes every plug-in that comes, and
// never reads a byte.

#include "common/names/names.h"
#include "harness/raw_server.h"
#include "soak/shared_counts.h"

namespace orvane::soak {
int runSquatter(const std::wstring& name) {
    const UniqueHandle running(CreateMutexW(nullptr, FALSE, names::kRunningMutex.wide()));
    SharedCounts counts(name);
    const test::Squatter commands(names::kCommandPipe.narrow(), test::Squatter::Way::neverReads);
    const test::Squatter events(names::kEventPipe.narrow(), test::Squatter::Way::neverReads);
    for (unsigned counted = 0;; Sleep(2))
        for (; counted < events.clients; ++counted) ++counts->hellos;
}

}  // namespace orvane::soak
