#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvane::test {

// The registry value that names the application's folder; what it was before comes back in the end.
class InstallPath {
public:
    InstallPath() : m_old(1024) {
        DWORD size = static_cast<DWORD>(m_old.size());
        const bool had = RegGetValueW(HKEY_LOCAL_MACHINE, kKey, L"Path", RRF_RT_REG_SZ, nullptr,
                                      m_old.data(), &size) == ERROR_SUCCESS;
        m_old.resize(had ? size : 0);
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Path");
    }
    explicit InstallPath(const std::wstring& folder) : InstallPath() { set(folder); }
    ~InstallPath() {
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Path");
        if (!m_old.empty()) set(REG_SZ, m_old.data(), static_cast<DWORD>(m_old.size()));
    }
    InstallPath(const InstallPath&) = delete;
    InstallPath& operator=(const InstallPath&) = delete;

    void set(const std::wstring& folder) {
        set(REG_SZ, folder.c_str(), static_cast<DWORD>(folder.size() + 1) * sizeof(wchar_t));
    }
    void set(DWORD type, const void* data, DWORD bytes) {
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Path", type, data, bytes),
                  ERROR_SUCCESS);
    }

private:
    static constexpr const wchar_t* kKey = L"Software\\OrVaneMedia\\Settings";
    std::vector<BYTE> m_old;
};

}  // namespace orvane::test
