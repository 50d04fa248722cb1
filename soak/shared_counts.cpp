#include "soak/shared_counts.h"

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

}  // namespace orvane::soak
