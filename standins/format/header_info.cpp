#include "standins/format/header_info.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "standins/format/attribute_values.h"
#include "standins/format/guarded.h"

namespace orvane::standin {

namespace {

using asf::Attribute;
using Attributes = std::vector<Attribute>;

constexpr WORD kAllStreams = 0xFFFF;
constexpr WORD kLastStream = 127;
constexpr std::size_t kMostIndices = std::numeric_limits<WORD>::max();
constexpr std::size_t kLongestName = 1024;

std::u16string_view view(LPCWSTR text) {
    return {reinterpret_cast<const char16_t*>(text), std::wcslen(text)};
}

// The positions in the header of the attributes of one stream: the index counts these.
std::vector<std::size_t> positions(const Attributes& attributes, WORD stream) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < attributes.size(); ++i)
        if (stream == kAllStreams || attributes[i].stream == stream) found.push_back(i);
    // The interfaces count in 16 bits; attributes beyond that cannot be reached through them.
    found.resize(std::min(found.size(), kMostIndices));
    return found;
}

// Copies the value if it fits; `length` becomes the size needed in either case.
template <typename Length>
HRESULT giveValue(const Attribute& attribute, WMT_ATTR_DATATYPE* type, BYTE* value,
                  Length* length) {
    const auto given = toInterface(attribute, value);
    if (!given) return NS_E_INVALID_DATA;
    const std::size_t needed = given->bytes.size();
    if (needed > std::numeric_limits<Length>::max()) return NS_E_SDK_BUFFERTOOSMALL;
    *type = given->type;
    const Length room = std::exchange(*length, static_cast<Length>(needed));
    if (value && room < needed) return NS_E_SDK_BUFFERTOOSMALL;
    if (value) std::ranges::copy(given->bytes, value);
    return S_OK;
}

HRESULT giveName(const Attribute& attribute, WCHAR* name, WORD* length) {
    const std::size_t needed = attribute.name.size() + 1;
    const WORD room = std::exchange(*length, static_cast<WORD>(needed));
    if (!name) return S_OK;
    if (room < needed) return NS_E_SDK_BUFFERTOOSMALL;
    std::copy_n(attribute.name.c_str(), needed, name);
    return S_OK;
}

HRESULT checkName(LPCWSTR name) {
    if (!name) return E_POINTER;
    const std::size_t length = std::wcslen(name);
    return length == 0 || length > kLongestName ? E_INVALIDARG : S_OK;
}

}  // namespace

HRESULT HeaderInfo::checkChangeable() const {
    if (m_kind == Kind::reader) return E_NOTIMPL;
    if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
    return m_file.isWritable() ? S_OK : E_ACCESSDENIED;
}

STDMETHODIMP HeaderInfo::GetAttributeByName(WORD* stream, LPCWSTR name, WMT_ATTR_DATATYPE* type,
                                            BYTE* value, WORD* length) {
    return guarded([&]() -> HRESULT {
        if (!stream || !name || !type || !length) return E_POINTER;
        if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
        const auto named = [wanted = view(name)](const Attribute& a) { return a.name == wanted; };
        const Attributes& attributes = m_file.header().attributes();
        auto found = std::ranges::find_if(
            attributes, [&](const Attribute& a) { return a.stream == *stream && named(a); });
        // Stream 0 asks for any; one of the whole file comes first.
        if (found == attributes.end() && *stream == 0)
            found = std::ranges::find_if(attributes, named);
        if (found == attributes.end()) return ASF_E_NOTFOUND;
        WMT_ATTR_DATATYPE given = *type;
        const HRESULT result = giveValue(*found, &given, value, length);
        if (SUCCEEDED(result)) *type = given;
        return result;
    });
}

STDMETHODIMP HeaderInfo::GetAttributeIndices(WORD stream, LPCWSTR name, WORD* language,
                                             WORD* indices, WORD* result) {
    return guarded([&]() -> HRESULT {
        if (!result) return E_POINTER;
        if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
        if (stream != kAllStreams && stream > kLastStream) return NS_E_INVALID_REQUEST;
        const Attributes& attributes = m_file.header().attributes();
        std::vector<WORD> found;
        WORD index = 0;
        for (const std::size_t at : positions(attributes, stream)) {
            const Attribute& a = attributes[at];
            if ((!name || a.name == view(name)) && (!language || a.language == *language))
                found.push_back(index);
            ++index;
        }
        const WORD room = std::exchange(*result, static_cast<WORD>(found.size()));
        if (!indices) return S_OK;
        if (room < found.size()) return NS_E_SDK_BUFFERTOOSMALL;
        std::ranges::reverse_copy(found, indices);
        return S_OK;
    });
}

STDMETHODIMP HeaderInfo::GetAttributeByIndexEx(WORD stream, WORD index, LPWSTR name,
                                               WORD* nameLength, WMT_ATTR_DATATYPE* type,
                                               WORD* language, BYTE* value, DWORD* length) {
    return guarded([&]() -> HRESULT {
        if (!nameLength || !type || !language || !length) return E_POINTER;
        if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
        const auto at = positions(m_file.header().attributes(), stream);
        if (index >= at.size()) return NS_E_INVALID_REQUEST;
        const Attribute& attribute = m_file.header().attributes()[at[index]];
        // Both lengths are given even when one buffer is too small.
        const HRESULT named = giveName(attribute, name, nameLength);
        *language = attribute.language;
        const HRESULT valued = giveValue(attribute, type, value, length);
        return FAILED(valued) ? valued : named;
    });
}

STDMETHODIMP HeaderInfo::AddAttribute(WORD stream, LPCWSTR name, WORD* index,
                                      WMT_ATTR_DATATYPE type, WORD language, const BYTE* value,
                                      DWORD length) {
    return guarded([&]() -> HRESULT {
        if (const HRESULT result = checkChangeable(); FAILED(result)) return result;
        if (const HRESULT result = checkName(name); FAILED(result)) return result;
        if (stream > kLastStream) return NS_E_INVALID_REQUEST;
        if (language != 0) return ASF_E_BADLANGUAGEID;
        const std::size_t newIndex = positions(m_file.header().attributes(), stream).size();
        if (newIndex == kMostIndices) return NS_E_INVALID_REQUEST;
        Attribute added;
        added.name = view(name);
        added.stream = stream;
        const HRESULT result = fromInterface(type, value, length, added);
        if (FAILED(result)) return result;
        m_file.changedHeader().attributes().push_back(std::move(added));
        if (index) *index = static_cast<WORD>(newIndex);
        return S_OK;
    });
}

STDMETHODIMP HeaderInfo::DeleteAttribute(WORD stream, WORD index) {
    return guarded([&]() -> HRESULT {
        if (const HRESULT result = checkChangeable(); FAILED(result)) return result;
        const auto at = positions(m_file.header().attributes(), stream);
        if (index >= at.size()) return NS_E_INVALID_REQUEST;
        Attributes& attributes = m_file.changedHeader().attributes();
        attributes.erase(attributes.begin() + static_cast<std::ptrdiff_t>(at[index]));
        return S_OK;
    });
}

}  // namespace orvane::standin
