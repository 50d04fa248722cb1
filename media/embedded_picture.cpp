#include "media/embedded_picture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <vector>

#include "media/step_log.h"
#include "platform/wm_format.h"

namespace orvane {
namespace {

constexpr WORD kWholeFile = 0;
constexpr WORD kDefaultLanguage = 0;

// An attribute's value in memory of ours; the pointers within point into it.
struct Value {
    std::unique_ptr<BYTE[]> bytes;
    DWORD length = 0;
};

std::optional<Value> allocate(DWORD length) {
    Value value{std::unique_ptr<BYTE[]>(new (std::nothrow) BYTE[length]), length};
    if (!value.bytes) return std::nullopt;
    return value;
}

// By name: the runtime's first picture, but of no more than a 16-bit length; 0 for any other.
WORD lengthByName(IWMHeaderInfo3* header) {
    WORD stream = kWholeFile;
    WORD length = 0;
    WMT_ATTR_DATATYPE type = WMT_TYPE_DWORD;
    const HRESULT result =
        header->GetAttributeByName(&stream, wm_format::kPictureAttribute, &type, nullptr, &length);
    return SUCCEEDED(result) && type == WMT_TYPE_BINARY ? length : WORD{0};
}

std::optional<Value> readByName(IWMHeaderInfo3* header) {
    WORD length = lengthByName(header);
    if (length == 0) return std::nullopt;
    std::optional<Value> value = allocate(length);
    if (!value) return std::nullopt;
    WORD stream = kWholeFile;
    WMT_ATTR_DATATYPE type = WMT_TYPE_DWORD;
    if (FAILED(header->GetAttributeByName(&stream, wm_format::kPictureAttribute, &type,
                                          value->bytes.get(), &length)) ||
        type != WMT_TYPE_BINARY)
        return std::nullopt;
    value->length = std::min<DWORD>(value->length, length);
    return value;
}

// Where the pictures of all languages are, the highest index first.
std::vector<WORD> pictureIndices(IWMHeaderInfo3* header) {
    WORD count = 0;
    if (FAILED(header->GetAttributeIndices(kWholeFile, wm_format::kPictureAttribute, nullptr,
                                           nullptr, &count)) ||
        count == 0)
        return {};
    std::vector<WORD> indices(count);
    if (FAILED(header->GetAttributeIndices(kWholeFile, wm_format::kPictureAttribute, nullptr,
                                           indices.data(), &count)))
        return {};
    indices.resize(std::min<std::size_t>(indices.size(), count));
    std::sort(indices.begin(), indices.end(), std::greater<>());
    indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
    return indices;
}

// The value's length, or its bytes too when `bytes` is not null.
bool attributeAt(IWMHeaderInfo3* header, WORD index, BYTE* bytes, DWORD& length) {
    std::array<wchar_t, 1025> name{};  // the runtime's longest, and its NUL
    WORD nameLength = bytes ? static_cast<WORD>(name.size()) : WORD{0};
    WORD language = 0;
    WMT_ATTR_DATATYPE type = WMT_TYPE_DWORD;
    return SUCCEEDED(header->GetAttributeByIndexEx(kWholeFile, index, bytes ? name.data() : nullptr,
                                                   &nameLength, &type, &language, bytes,
                                                   &length)) &&
           type == WMT_TYPE_BINARY;
}

std::optional<WORD> firstIndex(IWMHeaderInfo3* header) {
    const std::vector<WORD> indices = pictureIndices(header);
    if (indices.empty()) return std::nullopt;
    return indices.back();
}

DWORD lengthByIndex(IWMHeaderInfo3* header) {
    const std::optional<WORD> index = firstIndex(header);
    DWORD length = 0;
    return index && attributeAt(header, *index, nullptr, length) ? length : 0;
}

std::optional<Value> readByIndex(IWMHeaderInfo3* header) {
    const std::optional<WORD> index = firstIndex(header);
    DWORD length = 0;
    if (!index || !attributeAt(header, *index, nullptr, length) || length == 0) return std::nullopt;
    std::optional<Value> value = allocate(length);
    if (!value || !attributeAt(header, *index, value->bytes.get(), length)) return std::nullopt;
    value->length = std::min(value->length, length);
    return value;
}

// The image within a record, when the record lies within its value and names a part of it.
std::optional<std::span<const BYTE>> imageIn(const Value& value) {
    WM_PICTURE record;
    if (value.length < sizeof(record)) return std::nullopt;
    std::memcpy(&record, value.bytes.get(), sizeof(record));
    const auto begin = reinterpret_cast<std::uintptr_t>(value.bytes.get());
    const auto image = reinterpret_cast<std::uintptr_t>(record.pbData);
    if (record.dwDataLen == 0 || image < begin || image - begin > value.length ||
        record.dwDataLen > value.length - (image - begin))
        return std::nullopt;
    return std::span<const BYTE>(value.bytes.get() + (image - begin), record.dwDataLen);
}

}  // namespace

bool EmbeddedPicture::isIn(IWMHeaderInfo3* header) {
    return lengthByName(header) > 0 || lengthByIndex(header) > 0;
}

std::optional<EmbeddedPicture> EmbeddedPicture::read(IWMHeaderInfo3* header) {
    for (const auto readValue : {readByName, readByIndex}) {
        std::optional<Value> value = readValue(header);
        if (!value) continue;
        if (const auto image = imageIn(*value))
            return EmbeddedPicture(std::move(value->bytes), *image);
    }
    return std::nullopt;
}

bool EmbeddedPicture::replace(IWMHeaderInfo3* header, std::span<const BYTE> image,
                              const StepLog& steps) {
    const bool storable = !image.empty() && image.size() <= MAXDWORD;
    if (!steps.ok("size of the image", storable ? S_OK : E_INVALIDARG)) return false;

    // From the highest index down: each deletion lowers the indices above it by one.
    for (const WORD index : pictureIndices(header))
        steps.ok("DeleteAttribute", header->DeleteAttribute(kWholeFile, index));

    wchar_t mimeType[] = L"image/jpeg";
    wchar_t description[] = L"";
    WM_PICTURE record{};
    record.pwszMIMEType = mimeType;
    record.pwszDescription = description;
    record.dwDataLen = static_cast<DWORD>(image.size());
    record.pbData = const_cast<BYTE*>(image.data());
    WORD index = 0;
    return steps.ok("AddAttribute",
                    header->AddAttribute(kWholeFile, wm_format::kPictureAttribute, &index,
                                         WMT_TYPE_BINARY, kDefaultLanguage,
                                         reinterpret_cast<const BYTE*>(&record), sizeof(record)));
}

}  // namespace orvane
