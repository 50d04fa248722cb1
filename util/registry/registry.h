#pragma once

// Reads registry values of any type as UTF-8 text. Values are not trusted: a wrong length or a
// missing terminator never makes the code read past the data.

#include <windows.h>

#include <cstddef>

#include "util/text/owned.h"

namespace orvane {

// One open registry key, closed by the destructor. Errors are logged unless `log` is 0. After a
// failure the thread's last error is the registry call's result. Not thread-safe.
class RegistryUtil {
public:
    explicit RegistryUtil(int log) noexcept;
    virtual ~RegistryUtil();
    RegistryUtil(const RegistryUtil&) = delete;
    RegistryUtil& operator=(const RegistryUtil&) = delete;

    // Closes the key that is open, if any, and opens `root`\`subkey` (`subkey` may be null). When
    // `notFound` is not null it receives whether the key is missing, which is then no error in the
    // log. RegOpenKeyExW.
    [[nodiscard]] bool OpenKey(HKEY root, const char* subkey, REGSAM access,
                               bool* notFound) noexcept;

    // The value as text, or null: strings unchanged, REG_EXPAND_SZ expanded, REG_MULTI_SZ joined by
    // commas, numbers in signed decimal, all other types in hexadecimal. RegQueryValueExW.
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

// Opens a key, reads one value and closes the key; null on failure.
[[nodiscard]] OwnedText utl_reg_get_value(HKEY root, const char* subkey, const char* name,
                                          int log) noexcept;

}  // namespace orvane
