#include "platform/thread_library.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>

namespace orvane {
namespace {

constinit std::array<DWORD, 8> slots{};
constinit std::atomic<std::size_t> taken{0};
constinit bool givenBackAtEnd = false;

// Stands in the module's import of TlsAlloc, below; also before any constructor has run.
DWORD WINAPI takeSlot() {
    const auto alloc = reinterpret_cast<decltype(&TlsAlloc)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "TlsAlloc")));
    const DWORD slot = alloc != nullptr ? alloc() : TLS_OUT_OF_INDEXES;
    if (slot == TLS_OUT_OF_INDEXES) return slot;
    if (const std::size_t place = taken++; place < slots.size()) slots[place] = slot;
    return slot;
}

// The first to be constructed is the last to be destroyed: other destructors may still throw and
// catch, for which they need the slot.
struct End {
    ~End() {
        if (!givenBackAtEnd) return;
        std::for_each_n(slots.begin(), std::min(taken.load(), slots.size()), &TlsFree);
    }
};
[[gnu::init_priority(101)]] End end;

}  // namespace

void giveBackThreadSlotsAtEnd() noexcept { givenBackAtEnd = true; }

}  // namespace orvane

// What the linker makes the library's calls go through: defined here, it is not taken from
// kernel32.
extern "C" {
extern decltype(&TlsAlloc) const kImportOfTlsAlloc __asm__("__imp__TlsAlloc@0");
decltype(&TlsAlloc) const kImportOfTlsAlloc = &orvane::takeSlot;
}
