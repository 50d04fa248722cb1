#include "standins/format/header_info.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <string_view>
#include <vector>

#include "standins/format/attribute_values.h"
#include "standins/format/guarded.h"

namespace orvane::standin {

namespace {

using asf::Attribute;
using Attributes = std::vector<Attribute>;

constexpr WORD kAllStreams = 0xFFFF;
constexpr WORD kLastStream = 127;
constexpr std::size_t kLongestName = 1024;

std::u16string_view view(LPCWSTR text) {
    return {reinterpret_cast<const char16_t*>(text), std::wcslen(text)};
}

bool validStream(WORD stream) { return stream <= kLastStream; }

bool counted(const Attribute& attribute, WORD stream) {
    return stream == kAllStreams || attribute.stream == stream;
}

// The position in the header of the attribute that has `index` in its stream.
std::optional<std::size_t> position(const Attributes& attributes, WORD stream, WORD index) {
    std::size_t left = index;
    for (std::size_t i = 0; i < attributes.size(); ++i)
        if (counted(attributes[i], stream) && left-- == 0) return i;
    return std::nullopt;
}

// The interfaces count in 16 bits; attributes beyond that cannot be reached through them.
WORD count(const Attributes& attributes, WORD stream) {
    const auto all = std::ranges::count_if(
        attributes, [stream](const Attribute& a) { return counted(a, stream); });
    return static_cast<WORD>(std::min<std::ptrdiff_t>(all, std::numeric_limits<WORD>::max()));
}

// Gives what fits; `length` is what is needed in either case.
template <typename Length>
HRESULT giveValue(const Attribute& attribute, BYTE* value, Length* length) {
    const auto needed = interfaceSize(attribute);
    if (!needed) return NS_E_INVALID_DATA;
    if (*needed > std::numeric_limits<Length>::max()) return NS_E_SDK_BUFFERTOOSMALL;
    const Length room = *length;
    *length = static_cast<Length>(*needed);
    if (!value) return S_OK;
    if (room < *needed) return NS_E_SDK_BUFFERTOOSMALL;
    copyToInterface(attribute, value);
    return S_OK;
}

HRESULT giveName(const Attribute& attribute, WCHAR* name, WORD* length) {
    const std::size_t needed = attribute.name.size() + 1;
    const WORD room = *length;
    *length = static_cast<WORD>(needed);
    if (!name) return S_OK;
    if (room < needed) return NS_E_SDK_BUFFERTOOSMALL;
    std::ranges::copy(attribute.name, name);
    name[needed - 1] = L'\0';
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
    if (!stream || !name || !type || !length) return E_POINTER;
    if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
    const auto named = [wanted = view(name)](const Attribute& a) { return a.name == wanted; };
    const Attributes& attributes = m_file.header().attributes();
    auto found = std::ranges::find_if(
        attributes, [&](const Attribute& a) { return a.stream == *stream && named(a); });
    // Stream 0 asks for any; one of the whole file comes first.
    if (found == attributes.end() && *stream == 0) found = std::ranges::find_if(attributes, named);
    if (found == attributes.end()) return ASF_E_NOTFOUND;
    const HRESULT result = giveValue(*found, value, length);
    if (SUCCEEDED(result)) *type = interfaceType(*found);
    return result;
}

STDMETHODIMP HeaderInfo::GetAttributeIndices(WORD stream, LPCWSTR name, WORD* language,
                                             WORD* indices, WORD* result) {
    return guarded([&]() -> HRESULT {
        if (!result) return E_POINTER;
        if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
        if (stream != kAllStreams && !validStream(stream)) return NS_E_INVALID_REQUEST;
        std::vector<WORD> found;
        std::size_t index = 0;
        for (const Attribute& a : m_file.header().attributes()) {
            if (!counted(a, stream)) continue;
            if (index > std::numeric_limits<WORD>::max()) break;
            const bool matches =
                (!name || a.name == view(name)) && (!language || a.language == *language);
            if (matches) found.push_back(static_cast<WORD>(index));
            ++index;
        }
        const WORD room = *result;
        *result = static_cast<WORD>(found.size());
        if (!indices) return S_OK;
        if (room < found.size()) return NS_E_SDK_BUFFERTOOSMALL;
        std::ranges::reverse_copy(found, indices);
        return S_OK;
    });
}

STDMETHODIMP HeaderInfo::GetAttributeByIndexEx(WORD stream, WORD index, LPWSTR name,
                                               WORD* nameLength, WMT_ATTR_DATATYPE* type,
                                               WORD* language, BYTE* value, DWORD* length) {
    if (!nameLength || !type || !language || !length) return E_POINTER;
    if (!m_file.isOpen()) return ASF_E_INVALIDSTATE;
    const Attributes& attributes = m_file.header().attributes();
    const auto at = position(attributes, stream, index);
    if (!at) return NS_E_INVALID_REQUEST;
    // Both lengths are given even when one buffer is too small.
    const HRESULT named = giveName(attributes[*at], name, nameLength);
    const HRESULT valued = giveValue(attributes[*at], value, length);
    *language = attributes[*at].language;
    *type = interfaceType(attributes[*at]);
    return FAILED(valued) ? valued : named;
}

STDMETHODIMP HeaderInfo::AddAttribute(WORD stream, LPCWSTR name, WORD* index,
                                      WMT_ATTR_DATATYPE type, WORD language, const BYTE* value,
                                      DWORD length) {
    return guarded([&]() -> HRESULT {
        if (const HRESULT result = checkChangeable(); FAILED(result)) return result;
        if (const HRESULT result = checkName(name); FAILED(result)) return result;
        if (!validStream(stream)) return NS_E_INVALID_REQUEST;
        if (language != 0) return ASF_E_BADLANGUAGEID;
        const WORD newIndex = count(m_file.header().attributes(), stream);
        if (newIndex == std::numeric_limits<WORD>::max()) return NS_E_INVALID_REQUEST;
        Attribute added;
        added.name = view(name);
        added.stream = stream;
        if (const HRESULT result = copyFromInterface(type, value, length, added); FAILED(result))
            return result;
        m_file.changedHeader().attributes().push_back(std::move(added));
        if (index) *index = newIndex;
        return S_OK;
    });
}

STDMETHODIMP HeaderInfo::DeleteAttribute(WORD stream, WORD index) {
    return guarded([&]() -> HRESULT {
        if (const HRESULT result = checkChangeable(); FAILED(result)) return result;
        const auto at = position(m_file.header().attributes(), stream, index);
        if (!at) return NS_E_INVALID_REQUEST;
        Attributes& attributes = m_file.changedHeader().attributes();
        attributes.erase(attributes.begin() + static_cast<std::ptrdiff_t>(*at));
        return S_OK;
    });
}

}  // namespace orvane::standin
