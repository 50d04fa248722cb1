#pragma once

#include <windows.h>

#include <tlhelp32.h>
#include <winternl.h>

#include <vector>

#include "platform/handles.h"

namespace orvane::test {

inline int threadsOfThisProcess() {
    const UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int count = 0;
    for (BOOL more = Thread32First(snapshot.get(), &entry); more;
         more = Thread32Next(snapshot.get(), &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    return count;
}

// -1 when the system does not tell.
inline int handlesOfThisProcess() {
    struct Entry {
        USHORT process, backTrace;
        UCHAR type, flags;
        USHORT handle;
        void* object;
        ULONG access;
    };
    using Query = NTSTATUS(NTAPI*)(int, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<BYTE> buffer(16 * 1024 * 1024);
    ULONG needed = 0;
    if (query(16, buffer.data(), static_cast<ULONG>(buffer.size()), &needed) != 0) return -1;
    const ULONG count = *reinterpret_cast<const ULONG*>(buffer.data());
    const auto* entries = reinterpret_cast<const Entry*>(buffer.data() + sizeof(ULONG));
    int own = 0;
    for (ULONG i = 0; i < count; ++i)
        if (entries[i].process == static_cast<USHORT>(GetCurrentProcessId())) ++own;
    return own;
}

}  // namespace orvane::test
