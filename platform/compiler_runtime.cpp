#include "platform/compiler_runtime.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

// The runtime's own, for tools that look for leaks; no header declares it.
namespace __gnu_cxx {
void __freeres() noexcept;
}

namespace orvane {
namespace {

constinit std::array<DWORD, 8> slots{};
constinit std::atomic<std::size_t> taken{0};
constinit bool givenBackAtEnd = false;

template <typename Function>
Function fromKernel32(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name)));
}

// These two stand in the module's imports, below; also before any constructor has run.
DWORD WINAPI takeSlot() {
    const auto alloc = fromKernel32<decltype(&TlsAlloc)>("TlsAlloc");
    const DWORD slot = alloc != nullptr ? alloc() : TLS_OUT_OF_INDEXES;
    if (slot == TLS_OUT_OF_INDEXES) return slot;
    if (const std::size_t place = taken++; place < slots.size()) slots[place] = slot;
    return slot;
}

// The start-up code asks for the GCC runtime's DLL, which a codec may have brought into the
// process, and would register the module's unwind tables there. The unwinder that is linked in
// would not find them, and the first exception would end the process.
HMODULE WINAPI moduleHandle(LPCSTR name) {
    if (name != nullptr && std::strcmp(name, "libgcc_s_dw2-1.dll") == 0) return nullptr;
    const auto find = fromKernel32<decltype(&GetModuleHandleA)>("GetModuleHandleA");
    return find != nullptr ? find(name) : nullptr;
}

// The first to be constructed is the last to be destroyed: other destructors may still throw and
// catch, for which they need both.
struct End {
    ~End() {
        if (!givenBackAtEnd) return;
        std::for_each_n(slots.begin(), std::min(taken.load(), slots.size()), &TlsFree);
        __gnu_cxx::__freeres();
    }
};
[[gnu::init_priority(101)]] End end;

}  // namespace

void giveBackRuntimeAtEnd() noexcept { givenBackAtEnd = true; }

}  // namespace orvane

// What the linker makes the library's calls go through: defined here, it is not taken from
// kernel32.
extern "C" {
extern decltype(&TlsAlloc) const kImportOfTlsAlloc __asm__("__imp__TlsAlloc@0");
decltype(&TlsAlloc) const kImportOfTlsAlloc = &orvane::takeSlot;
extern decltype(&GetModuleHandleA) const kImportOfModuleHandle __asm__("__imp__GetModuleHandleA@4");
decltype(&GetModuleHandleA) const kImportOfModuleHandle = &orvane::moduleHandle;
}
