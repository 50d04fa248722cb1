#include "soak/child.h"

#include <stdexcept>

namespace orvane::soak {

std::uint32_t hashPath(std::uint32_t hash, const wchar_t* path) {
    constexpr std::uint32_t kPrime = 16777619;
    do hash = (hash ^ *path) * kPrime;
    while (*path++ != L'\0');
    return hash;
}

SharedCounts::SharedCounts(const std::wstring& name)
    : m_section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Counts),
                                   name.c_str())),
      m_counts(static_cast<Counts*>(
          MapViewOfFile(m_section.get(), FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Counts)))) {
    if (m_counts == nullptr) throw std::runtime_error("there is no shared memory to be had");
}

SharedCounts::~SharedCounts() { UnmapViewOfFile(m_counts); }

Child::Child(const std::wstring& arguments) {
    wchar_t program[1024] = {};
    GetModuleFileNameW(nullptr, program, 1024);
    std::wstring line = L"\"" + std::wstring(program) + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &started))
        throw std::runtime_error("a process cannot be started");
    const UniqueHandle thread(started.hThread);
    m_process.reset(started.hProcess);
}

void Child::kill() {
    TerminateProcess(m_process.get(), 99);
    WaitForSingleObject(m_process.get(), 10'000);
}

}  // namespace orvane::soak
