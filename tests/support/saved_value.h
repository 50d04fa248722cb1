#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvane::test {

// A text below HKEY_LOCAL_MACHINE that a test changes. What was there comes back in the end, also
// after a run that was cut short.
class SavedValue {
public:
    SavedValue(const wchar_t* key, const wchar_t* name) : m_key(key), m_name(name) {
        if (read(kept()).empty() && !read(m_name).empty()) write(kept(), read(m_name));
    }
    ~SavedValue() {
        if (const auto text = read(kept()); !text.empty()) {
            write(m_name, text);
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, m_key.c_str(), kept().c_str());
        } else {
            remove();
        }
    }
    SavedValue(const SavedValue&) = delete;
    SavedValue& operator=(const SavedValue&) = delete;

    void set(const std::wstring& text) { write(m_name, text); }
    void set(DWORD type, const void* data, DWORD bytes) { write(m_name, type, data, bytes); }
    void remove() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, m_key.c_str(), m_name.c_str()); }

private:
    [[nodiscard]] std::wstring kept() const { return m_name + L" before OrVane's tests"; }
    [[nodiscard]] std::wstring read(const std::wstring& name) const {
        wchar_t text[1024] = {};
        DWORD size = sizeof text;
        RegGetValueW(HKEY_LOCAL_MACHINE, m_key.c_str(), name.c_str(), RRF_RT_REG_SZ, nullptr, text,
                     &size);
        return text;
    }
    void write(const std::wstring& name, const std::wstring& text) {
        write(name, REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1) * sizeof(wchar_t));
    }
    void write(const std::wstring& name, DWORD type, const void* data, DWORD bytes) {
        EXPECT_EQ(
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, m_key.c_str(), name.c_str(), type, data, bytes),
            ERROR_SUCCESS);
    }

    const std::wstring m_key;
    const std::wstring m_name;
};

}  // namespace orvane::test
