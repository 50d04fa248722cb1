#include "standins/format/attribute_values.h"

#include <algorithm>
#include <cstring>
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

// Bytes of a value whose type fixes them; 0 for the others.
DWORD fixedSize(WMT_ATTR_DATATYPE type) {
    switch (type) {
        case WMT_TYPE_DWORD:
        case WMT_TYPE_BOOL:
            return 4;
        case WMT_TYPE_QWORD:
            return 8;
        case WMT_TYPE_WORD:
            return 2;
        case WMT_TYPE_GUID:
            return 16;
        default:
            return 0;
    }
}

std::optional<AttributeType> fileType(WMT_ATTR_DATATYPE type) {
    switch (type) {
        case WMT_TYPE_STRING:
            return AttributeType::unicode;
        case WMT_TYPE_BINARY:
            return AttributeType::bytes;
        case WMT_TYPE_BOOL:
            return AttributeType::boolean;
        case WMT_TYPE_DWORD:
            return AttributeType::dword;
        case WMT_TYPE_QWORD:
            return AttributeType::qword;
        case WMT_TYPE_WORD:
            return AttributeType::word;
        case WMT_TYPE_GUID:
            return AttributeType::guid;
        default:
            return std::nullopt;
    }
}

}  // namespace

WMT_ATTR_DATATYPE interfaceType(const Attribute& attribute) {
    switch (attribute.type) {
        case AttributeType::unicode:
            return WMT_TYPE_STRING;
        case AttributeType::boolean:
            return WMT_TYPE_BOOL;
        case AttributeType::dword:
            return WMT_TYPE_DWORD;
        case AttributeType::qword:
            return WMT_TYPE_QWORD;
        case AttributeType::word:
            return WMT_TYPE_WORD;
        case AttributeType::guid:
            return attribute.value.size() == 16 ? WMT_TYPE_GUID : WMT_TYPE_BINARY;
        default:
            return WMT_TYPE_BINARY;
    }
}

std::optional<DWORD> interfaceSize(const Attribute& attribute) {
    const WMT_ATTR_DATATYPE type = interfaceType(attribute);
    if (const DWORD fixed = fixedSize(type)) return fixed;
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
    const WMT_ATTR_DATATYPE type = interfaceType(attribute);
    if (type == WMT_TYPE_STRING) {
        std::ranges::copy(attribute.value, buffer);
        std::fill_n(buffer + attribute.value.size(), 2, BYTE{0});
    } else if (type == WMT_TYPE_BOOL) {
        const BOOL truth = attribute.number() != 0 ? TRUE : FALSE;
        std::memcpy(buffer, &truth, sizeof(truth));
    } else if (const DWORD fixed = fixedSize(type); fixed != 0 && type != WMT_TYPE_GUID) {
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
    const auto stored = fileType(type);
    if (!stored) return E_INVALIDARG;
    if (!value) return E_POINTER;
    if (type == WMT_TYPE_BINARY && out.name == asf::kPictureName)
        return takePicture(value, length, out);
    const DWORD fixed = fixedSize(type);
    if (fixed != 0 && length != fixed) return E_INVALIDARG;
    if (type == WMT_TYPE_STRING) {
        if (length % 2 != 0) return E_INVALIDARG;
        while (length >= 2 && value[length - 1] == 0 && value[length - 2] == 0) length -= 2;
    }
    out.type = *stored;
    out.value.assign(value, value + length);
    return S_OK;
}

}  // namespace orvane::standin
