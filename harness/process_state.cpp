#include "harness/process_state.h"

#include <windows.h>

#include <tlhelp32.h>
#include <winternl.h>

#include <vector>

#include "platform/handles.h"

namespace orvane::test {
namespace {

int countThreads() {
    const UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int count = 0;
    for (BOOL more = Thread32First(snapshot.get(), &entry); more;
         more = Thread32Next(snapshot.get(), &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    return count;
}

// From the system's table of all handles: Wine answers 0 to GetProcessHandleCount.
int countHandles() {
    struct Entry {
        USHORT process, backTrace;
        UCHAR type, flags;
        USHORT handle;
        void* object;
        ULONG access;
    };
    constexpr int kSystemHandleInformation = 16;
    using Query = NTSTATUS(NTAPI*)(int, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<BYTE> table(4 * 1024 * 1024);
    ULONG needed = 0;
    if (query(kSystemHandleInformation, table.data(), static_cast<ULONG>(table.size()), &needed) !=
        0)
        return -1;
    const ULONG count = *reinterpret_cast<const ULONG*>(table.data());
    const auto* entries = reinterpret_cast<const Entry*>(table.data() + sizeof(ULONG));
    int own = 0;
    for (ULONG i = 0; i < count; ++i)
        if (entries[i].process == static_cast<USHORT>(GetCurrentProcessId())) ++own;
    return own;
}

double committedMegabytes() {
    double bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof(region)) == sizeof(region);) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += static_cast<double>(region.RegionSize);
        const char* const next = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
        if (next <= at) break;
        at = next;
    }
    return bytes / 1e6;
}

}  // namespace

ProcessState ProcessState::now() { return {countThreads(), countHandles(), committedMegabytes()}; }

}  // namespace orvane::test
