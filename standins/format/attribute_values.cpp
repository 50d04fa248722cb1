#include "standins/format/attribute_values.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "standins/asf/bytes.h"
#include "standins/asf/picture.h"

namespace orvane::standin {

namespace {

using asf::Attribute;
using asf::AttributeType;
using asf::Bytes;

// A record, then its texts, then the image. The texts begin at an even address when the buffer
// does.
Bytes pictureBytes(const asf::Picture& picture, const BYTE* at) {
    Bytes bytes((sizeof(WM_PICTURE) + 1) / 2 * 2);
    const auto next = [&] { return const_cast<BYTE*>(at) + bytes.size(); };
    WM_PICTURE record{};
    record.bPictureType = picture.type;
    record.dwDataLen = static_cast<DWORD>(picture.data.size());
    record.pwszMIMEType = reinterpret_cast<LPWSTR>(next());
    asf::putTerminatedText(bytes, picture.mimeType);
    record.pwszDescription = reinterpret_cast<LPWSTR>(next());
    asf::putTerminatedText(bytes, picture.description);
    record.pbData = next();
    asf::putBytes(bytes, picture.data);
    std::memcpy(bytes.data(), &record, sizeof(record));
    return bytes;
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

}  // namespace

std::optional<InterfaceValue> toInterface(const Attribute& attribute, const BYTE* at) {
    const auto* const known = std::ranges::find(kTypes, attribute.type, &Type::inFile);
    const bool shortGuid = attribute.type == AttributeType::guid && attribute.value.size() != 16;
    InterfaceValue value{WMT_TYPE_BINARY, attribute.value};
    if (known == std::end(kTypes) || shortGuid) return value;
    value.type = known->inInterfaces;
    if (value.type == WMT_TYPE_STRING) {
        asf::putNumber(value.bytes, 0, 2);
    } else if (value.type == WMT_TYPE_BINARY && attribute.name == asf::kPictureName) {
        const auto picture = asf::Picture::parse(attribute.value);
        if (!picture) return std::nullopt;
        value.bytes = pictureBytes(*picture, at);
    } else if (known->size != 0 && value.type != WMT_TYPE_GUID) {
        const bool isTruth = value.type == WMT_TYPE_BOOL;
        value.bytes.clear();
        asf::putNumber(value.bytes, isTruth ? attribute.number() != 0 : attribute.number(),
                       known->size);
    }
    return value;
}

HRESULT fromInterface(WMT_ATTR_DATATYPE type, const BYTE* value, DWORD length, Attribute& out) {
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
