#pragma once

// Reading the registry: any value as UTF-8 text. What a value holds is not trusted: every type,
// length and ending is read without running past the data.

#include <windows.h>

#include <cstddef>

#include "util/text/owned.h"

namespace orvane {

// One open key. The switch given at construction says whether problems go to the log. On failure
// the thread's last error is the registry's result code. Not for use by two threads at once.
class RegistryUtil {
public:
    explicit RegistryUtil(int log) noexcept;
    virtual ~RegistryUtil();
    RegistryUtil(const RegistryUtil&) = delete;
    RegistryUtil& operator=(const RegistryUtil&) = delete;

    // Closes the key that is open, if any, and opens `root`\`subkey` (`subkey` may be null). A
    // caller that passes `notFound` counts with absence: it is then no error in the log.
    [[nodiscard]] bool OpenKey(HKEY root, const char* subkey, REGSAM access,
                               bool* notFound) noexcept;

    // The value as text, or none. Strings as they are, REG_EXPAND_SZ expanded, REG_MULTI_SZ joined
    // by commas, numbers in signed decimal, anything else binary in hexadecimal.
    [[nodiscard]] OwnedText GetValue(const char* name, bool* notFound) noexcept;

    bool Close() noexcept;

    [[nodiscard]] bool IsOpen() const noexcept { return m_key != nullptr; }
    [[nodiscard]] const char* GetKeyString() const noexcept;  // such as "HKLM\Software", or ""

private:
    [[nodiscard]] bool DoOpenKey(HKEY root, const char* rootText, const char* subkey, REGSAM access,
                                 bool* notFound) noexcept;
    [[nodiscard]] const char* KeyToString(HKEY root) const noexcept;

    HKEY m_key = nullptr;
    OwnedText m_keyText;
    int m_log;
};

// One value of one key, or none.
[[nodiscard]] OwnedText utl_reg_get_value(HKEY root, const char* subkey, const char* name,
                                          int log) noexcept;

}  // namespace orvane
