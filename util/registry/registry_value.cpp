#include "util/registry/registry_value.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {

OwnedText RegistryValue::ValueToUTF8(ValueType type) const noexcept {
    constexpr const char* self = "RegistryUtil::ValueToUTF8";
    if (m_size == 0) {
        OwnedText empty = duplicateText("");
        if (!empty) log_if(m_log, LOG_ERR, "%s: error duplicating empty string", self);
        return empty;
    }
    switch (type) {
        case ValueType::none:
        case ValueType::binary:
            return BinaryToUTF8();
        case ValueType::sz:
        case ValueType::link:
            return SzToUTF8();
        case ValueType::expandSz:
            return ExpandSzToUTF8();
        case ValueType::dword:
        case ValueType::dwordBigEndian:
        case ValueType::qword:
            return NumericToUTF8(type);
        case ValueType::multiSz:
            return MultiSzToUTF8();
        default:
            log_if(m_log, LOG_ERR, "%s: unsupported data type %d", self, static_cast<int>(type));
            return nullptr;
    }
}

OwnedText RegistryValue::SzToUTF8() const noexcept {
    constexpr const char* self = "RegistryUtil::SzToUTF8";
    if (isOdd(self)) return nullptr;
    if (!endsInNul()) {
        log_if(m_log, LOG_NOTICE, "%s: handling REG_SZ value %s\\%s without NUL terminator", self,
               m_key, m_name);
    }
    // A copy in either case: the data need not be aligned for units.
    const OwnedWide text = terminatedCopy(m_size / sizeof(Wide) + 1);
    if (!text) {
        log_if(m_log, LOG_ERR, "%s: error allocating %d bytes for NUL-terminated string", self,
               static_cast<int>(m_size + sizeof(Wide)));
        return nullptr;
    }
    return utl_wide_to_utf8_intl(text.get(), m_log);
}

OwnedText RegistryValue::ExpandSzToUTF8() const noexcept {
    constexpr const char* self = "RegistryUtil::ExpandSzToUTF8";
    const std::size_t units = m_size / sizeof(Wide) + m_size % sizeof(Wide) + 1;
    const OwnedWide text = terminatedCopy(units);
    if (!text) {
        log_if(m_log, LOG_ERR, "%s: error allocating %d bytes for NUL-terminated string", self,
               static_cast<int>(units * sizeof(Wide)));
        return nullptr;
    }
    const OwnedWide expanded = m_expand(text.get(), m_log);
    if (!expanded) return nullptr;
    return utl_wide_to_utf8_intl(expanded.get(), m_log);
}

OwnedText RegistryValue::MultiSzToUTF8() const noexcept {
    constexpr const char* self = "RegistryUtil::MultiSzToUTF8";
    if (isOdd(self)) return nullptr;
    if (!endsInNul()) {
        log_if(m_log, LOG_NOTICE, "%s: handling REG_MULTI_SZ value %s\\%s without NUL terminator",
               self, m_key, m_name);
    }
    const std::size_t units = m_size / sizeof(Wide);
    const OwnedWide list = terminatedCopy(units + 1);
    if (!list) {
        log_if(m_log, LOG_ERR, "%s: error allocating %d byte(s)", self,
               static_cast<int>((units + 1) * sizeof(Wide)));
        return nullptr;
    }
    Wide* const end = list.get() + units;
    for (Wide* next = list.get(); next != end && *next != 0;) {
        Wide* const stringEnd = std::find(next, end, Wide{0});
        log_if(m_log, LOG_DEBUG, "%s: parsing %d character string", self,
               static_cast<int>(stringEnd - next));
        if (stringEnd == end || stringEnd + 1 == end || stringEnd[1] == 0) break;
        log_if(m_log, LOG_DEBUG, "%s: replacing NUL with , at character %d", self,
               static_cast<int>(stringEnd - list.get()));
        *stringEnd = Wide{','};
        next = stringEnd + 1;
    }
    log_if(m_log, LOG_DEBUG, "%s: parsed multi string is %d character(s)", self,
           static_cast<int>(std::char_traits<Wide>::length(list.get())));
    return utl_wide_to_utf8_intl(list.get(), m_log);
}

OwnedText RegistryValue::NumericToUTF8(ValueType type) const noexcept {
    constexpr const char* self = "RegistryUtil::NumericToUTF8";
    constexpr std::size_t kDigits = 66;
    if (type != ValueType::dword && type != ValueType::dwordBigEndian && type != ValueType::qword) {
        log_if(m_log, LOG_ERR, "%s: called with incorrect data type %d", self,
               static_cast<int>(type));
        return nullptr;
    }
    OwnedText text = allocateText(kDigits);
    if (!text) {
        log_if(m_log, LOG_ERR, "%s: error allocating 66 bytes", self);
        return nullptr;
    }
    const std::size_t width = std::min<std::size_t>(m_size, type == ValueType::qword ? 8 : 4);
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < width; ++i) {
        const std::size_t next = type == ValueType::dwordBigEndian ? i : width - 1 - i;
        number = number << 8 | m_data[next];
    }
    const long long value = type == ValueType::qword
                                ? static_cast<std::int64_t>(number)
                                : static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
    std::snprintf(text.get(), kDigits, "%lld", value);
    return text;
}

OwnedText RegistryValue::BinaryToUTF8() const noexcept {
    constexpr char kHex[] = "0123456789ABCDEF";
    // The number of digits need not fit in a size for the largest data of all.
    OwnedText text = m_size <= SIZE_MAX / 2 - 1 ? allocateText(2 * m_size + 1) : nullptr;
    if (!text) {
        log_if(m_log, LOG_ERR, "%s: error allocating %d bytes for ascii-hex string",
               "RegistryUtil::BinaryToUTF8", static_cast<int>(2 * m_size + 1));
        return nullptr;
    }
    char* digit = text.get();
    for (const unsigned char* byte = m_data; byte != m_data + m_size; ++byte) {
        *digit++ = kHex[*byte >> 4];
        *digit++ = kHex[*byte & 0xF];
    }
    return text;
}

bool RegistryValue::isOdd(const char* self) const noexcept {
    if (m_size % sizeof(Wide) == 0) return false;
    log_if(m_log, LOG_ERR,
           "%s: REG_SZ value \"%s\\%s\" has an odd number of bytes (%d), can not be a valid "
           "wchar_t string",
           self, m_key, m_name, static_cast<int>(m_size));
    return true;
}

bool RegistryValue::endsInNul() const noexcept {
    return m_data[m_size - 1] == 0 && m_data[m_size - 2] == 0;
}

// The data and zeros up to `units`, which is more than the data takes.
OwnedWide RegistryValue::terminatedCopy(std::size_t units) const noexcept {
    OwnedWide copy = allocateWide(units);
    if (copy) std::memcpy(copy.get(), m_data, m_size);
    return copy;
}

}  // namespace orvane
