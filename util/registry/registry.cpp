#include "util/registry/registry.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "platform/last_error.h"
#include "util/failed_call/failed_call.h"
#include "util/log/log.h"
#include "util/registry/environment.h"
#include "util/registry/registry_value.h"

namespace orvane {
namespace {

struct RootName {
    std::uint32_t root;
    const char* text;
};
constexpr RootName kRootNames[] = {
    {0x80000000, "HKCR"}, {0x80000001, "HKCU"}, {0x80000002, "HKLM"}, {0x80000003, "HKU"},
    {0x80000004, "HKPD"}, {0x80000005, "HKCC"}, {0x80000006, "HKDD"}, {0x80000060, "HKPN"},
};

}  // namespace

RegistryUtil::RegistryUtil(int log) noexcept : m_log(log) {}

RegistryUtil::~RegistryUtil() { Close(); }

bool RegistryUtil::OpenKey(HKEY root, const char* subkey, REGSAM access, bool* notFound) noexcept {
    constexpr const char* self = "RegistryUtil::OpenKey";
    const char* const rootText = KeyToString(root);
    const char* const joint = subkey != nullptr ? "\\" : "";
    const char* const rest = subkey != nullptr ? subkey : "";
    log_if(m_log, LOG_DEBUG, "%s: entry point (%s%s%s)", self, rootText, joint, rest);
    if (notFound != nullptr) *notFound = false;
    if (IsOpen()) Close();
    log_if(m_log, LOG_DEBUG, "%s: opening \"%s%s%s\"", self, rootText, joint, rest);
    if (!DoOpenKey(root, rootText, subkey, access, notFound)) return false;

    m_keyText = joinTexts({rootText, joint, rest});
    if (m_keyText) return true;
    if (subkey != nullptr) {
        log_if(m_log, LOG_ERR, "%s: error building string representation of key\\subkey (%s\\%s)",
               self, rootText, subkey);
    } else {
        log_if(m_log, LOG_ERR, "%s: error duplicating key(%s)", self, rootText);
    }
    return true;  // only messages are the poorer
}

bool RegistryUtil::DoOpenKey(HKEY root, const char* rootText, const char* subkey, REGSAM access,
                             bool* notFound) noexcept {
    OwnedWide wideSubkey;
    if (subkey != nullptr) {
        wideSubkey = utl_utf8_to_wide_intl(subkey, m_log);
        if (!wideSubkey) return false;
    }
    HKEY key = nullptr;
    const LSTATUS result = RegOpenKeyExW(root, wideSubkey.get(), 0, access, &key);
    if (result == ERROR_SUCCESS) {
        m_key = key;
        return true;
    }
    const FailedCall failed(result);
    failed.log(m_log, failed.priority(ERROR_FILE_NOT_FOUND, notFound),
               "%s: RegOpenKeyExW(%s\\%s) failed (%d) -- %M", "RegistryUtil::DoOpenKey", rootText,
               subkey != nullptr ? subkey : "");
    return false;
}

OwnedText RegistryUtil::GetValue(const char* name, bool* notFound) noexcept {
    constexpr const char* self = "RegistryUtil::GetValue";
    log_if(m_log, LOG_DEBUG, "%s: entry point (%s)", self, name);
    if (notFound != nullptr) *notFound = false;
    if (!IsOpen()) {
        log_if(m_log, LOG_ERR, "%s: no registry key open", self);
        return nullptr;
    }
    const OwnedWide wideName = utl_utf8_to_wide_intl(name, m_log);
    if (!wideName) return nullptr;

    DWORD type = 0;
    DWORD size = 0;
    LSTATUS result = RegQueryValueExW(m_key, wideName.get(), nullptr, &type, nullptr, &size);
    if (result != ERROR_SUCCESS) {
        const FailedCall failed(result);
        failed.log(m_log, failed.priority(ERROR_FILE_NOT_FOUND, notFound),
                   "%s: RegQueryValueExW(%s\\%s) for size failed (%d) -- %M", self, GetKeyString(),
                   name);
        return nullptr;
    }

    OwnedBytes data;
    if (size <= std::numeric_limits<DWORD>::max() - 2) data = allocateBytes(std::size_t{size} + 2);
    if (!data) {
        log_if(m_log, LOG_ERR, "%s: error allocating %d byte(s) for value", self,
               static_cast<int>(size + 2));
        return nullptr;
    }
    // A value that has grown in between does not fit and fails here.
    DWORD delivered = size;
    result = RegQueryValueExW(m_key, wideName.get(), nullptr, &type, data.get(), &delivered);
    if (result != ERROR_SUCCESS) {
        FailedCall(result).log(m_log, LOG_ERR, "%s: RegQueryValueExW(%s\\%s) failed (%d) -- %M",
                               self, GetKeyString(), name);
        return nullptr;
    }
    const RegistryValue value(GetKeyString(), name, data.get(), std::min(size, delivered),
                              &expand_environment_strings_w, m_log);
    return value.ValueToUTF8(static_cast<ValueType>(type));
}

bool RegistryUtil::Close() noexcept {
    bool closed = true;
    if (HKEY key = std::exchange(m_key, nullptr); key != nullptr) {
        constexpr const char* self = "RegistryUtil::Close";
        LSTATUS result = ERROR_SUCCESS;
        {
            // After a failed read, the reason for that is what the caller wants to see.
            const KeepLastError before;
            log_if(m_log, LOG_DEBUG, "%s: closing %s", self, GetKeyString());
            result = RegCloseKey(key);
        }
        closed = result == ERROR_SUCCESS;
        if (!closed) {
            FailedCall(result).log(m_log, LOG_ERR, "%s: RegCloseKey(%s) failed (%d) -- %M", self,
                                   GetKeyString());
        }
    }
    m_keyText.reset();
    return closed;
}

const char* RegistryUtil::GetKeyString() const noexcept { return m_keyText ? m_keyText.get() : ""; }

const char* RegistryUtil::KeyToString(HKEY root) const noexcept {
    const auto value = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(root));
    for (const RootName& name : kRootNames) {
        if (name.root == value) return name.text;
    }
    log_if(m_log, LOG_ERR, "%s: unknown registry key: 0x%08X", "RegistryUtil::KeyToString", value);
    return "unknown";
}

OwnedText utl_reg_get_value(HKEY root, const char* subkey, const char* name, int log) noexcept {
    RegistryUtil registry(log);
    if (!registry.OpenKey(root, subkey, KEY_QUERY_VALUE, nullptr)) return nullptr;
    return registry.GetValue(name, nullptr);
}

}  // namespace orvane
