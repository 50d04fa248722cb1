#include "standins/format/attribute_values.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

#include "standins/asf/picture.h"

namespace orvane::standin {

namespace {

using asf::Attribute;
using asf::AttributeType;

bool isPicture(const Attribute& attribute) {
    return attribute.type == AttributeType::bytes && attribute.name == asf::kPictureName;
}

// The record is followed by its texts, so these begin at an even address when the buffer does.
constexpr std::size_t kRecordSize = (sizeof(WM_PICTURE) + 1) / 2 * 2;

std::size_t terminatedSize(const std::u16string& text) { return (text.size() + 1) * 2; }

std::size_t pictureSize(const asf::Picture& picture) {
    return kRecordSize + terminatedSize(picture.mimeType) + terminatedSize(picture.description) +
           picture.data.size();
}

LPWSTR putText(BYTE*& at, const std::u16string& text) {
    BYTE* const start = at;
    std::memcpy(at, text.c_str(), terminatedSize(text));
    at += terminatedSize(text);
    return reinterpret_cast<LPWSTR>(start);
}

void copyPicture(const asf::Picture& picture, BYTE* buffer) {
    BYTE* at = buffer + kRecordSize;
    WM_PICTURE record{};
    record.bPictureType = picture.type;
    record.pwszMIMEType = putText(at, picture.mimeType);
    record.pwszDescription = putText(at, picture.description);
    record.dwDataLen = static_cast<DWORD>(picture.data.size());
    record.pbData = at;
    std::ranges::copy(picture.data, at);
    std::memcpy(buffer, &record, sizeof(record));
}

HRESULT takePicture(const BYTE* value, DWORD length, Attribute& out) {
    if (length < sizeof(WM_PICTURE)) return NS_E_SDK_BUFFERTOOSMALL;
    WM_PICTURE record;
    std::memcpy(&record, value, sizeof(record));
    if (!record.pwszMIMEType || !record.pwszDescription) return E_POINTER;
    if (!record.pbData && record.dwDataLen != 0) return E_POINTER;
    asf::Picture picture;
    picture.type = record.bPictureType;
    picture.mimeType = reinterpret_cast<const char16_t*>(record.pwszMIMEType);
    picture.description = reinterpret_cast<const char16_t*>(record.pwszDescription);
    picture.data = {record.pbData, record.dwDataLen};
    out.type = AttributeType::bytes;
    out.value = picture.serialise();
    return S_OK;
}

struct Type {
    WMT_ATTR_DATATYPE inInterfaces;
    AttributeType inFile;
    DWORD size;  // bytes of a value in the interfaces; 0 when the type does not fix it
};
constexpr Type kTypes[] = {
    {WMT_TYPE_STRING, AttributeType::unicode, 0}, {WMT_TYPE_BINARY, AttributeType::bytes, 0},
    {WMT_TYPE_BOOL, AttributeType::boolean, 4},   {WMT_TYPE_DWORD, AttributeType::dword, 4},
    {WMT_TYPE_QWORD, AttributeType::qword, 8},    {WMT_TYPE_WORD, AttributeType::word, 2},
    {WMT_TYPE_GUID, AttributeType::guid, 16}};
constexpr const Type& kBinary = kTypes[1];

const Type& typeOf(const Attribute& attribute) {
    const auto* const type = std::ranges::find(kTypes, attribute.type, &Type::inFile);
    const bool shortGuid = attribute.type == AttributeType::guid && attribute.value.size() != 16;
    return type == std::end(kTypes) || shortGuid ? kBinary : *type;
}

}  // namespace

WMT_ATTR_DATATYPE interfaceType(const Attribute& attribute) {
    return typeOf(attribute).inInterfaces;
}

std::optional<DWORD> interfaceSize(const Attribute& attribute) {
    const auto [type, stored, fixed] = typeOf(attribute);
    if (fixed != 0) return fixed;
    std::size_t size = attribute.value.size() + (type == WMT_TYPE_STRING ? 2 : 0);
    if (isPicture(attribute)) {
        const auto picture = asf::Picture::parse(attribute.value);
        if (!picture) return std::nullopt;
        size = pictureSize(*picture);
    }
    if (size > std::numeric_limits<DWORD>::max()) return std::nullopt;
    return static_cast<DWORD>(size);
}

void copyToInterface(const Attribute& attribute, BYTE* buffer) {
    const auto [type, stored, fixed] = typeOf(attribute);
    if (type == WMT_TYPE_STRING) {
        std::ranges::copy(attribute.value, buffer);
        std::fill_n(buffer + attribute.value.size(), 2, BYTE{0});
    } else if (type == WMT_TYPE_BOOL) {
        const BOOL truth = attribute.number() != 0 ? TRUE : FALSE;
        std::memcpy(buffer, &truth, sizeof(truth));
    } else if (fixed != 0 && type != WMT_TYPE_GUID) {
        const std::uint64_t number = attribute.number();
        std::memcpy(buffer, &number, fixed);
    } else if (const auto picture =
                   isPicture(attribute) ? asf::Picture::parse(attribute.value) : std::nullopt) {
        copyPicture(*picture, buffer);
    } else {
        std::ranges::copy(attribute.value, buffer);
    }
}

HRESULT copyFromInterface(WMT_ATTR_DATATYPE type, const BYTE* value, DWORD length, Attribute& out) {
    const auto* const known = std::ranges::find(kTypes, type, &Type::inInterfaces);
    if (known == std::end(kTypes)) return E_INVALIDARG;
    if (!value) return E_POINTER;
    if (type == WMT_TYPE_BINARY && out.name == asf::kPictureName)
        return takePicture(value, length, out);
    if (known->size != 0 && length != known->size) return E_INVALIDARG;
    if (type == WMT_TYPE_STRING) {
        if (length % 2 != 0) return E_INVALIDARG;
        while (length >= 2 && value[length - 1] == 0 && value[length - 2] == 0) length -= 2;
    }
    out.type = known->inFile;
    out.value.assign(value, value + length);
    return S_OK;
}

}  // namespace orvane::standin
