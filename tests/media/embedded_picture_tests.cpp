#include "media/embedded_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "platform/wm_format.h"

namespace orvane {
namespace {

using Bytes = std::vector<BYTE>;

// COM interfaces have no virtual destructor by design.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// A header whose attributes are what a test says, as right or wrong as it likes.
class FakeHeader final : public IWMHeaderInfo3 {
public:
    struct Attribute {
        std::wstring name = L"WM/Picture";
        WORD language = 0;
        WMT_ATTR_DATATYPE type = WMT_TYPE_BINARY;
        Bytes image;
        // What the record claims, instead of what there is.
        std::function<void(WM_PICTURE&)> spoil;
        DWORD valueLength = 0;  // instead of the record's and the image's

        [[nodiscard]] DWORD length() const {
            return valueLength ? valueLength
                               : static_cast<DWORD>(sizeof(WM_PICTURE) + image.size());
        }
        void writeTo(BYTE* buffer) const {
            WM_PICTURE record{};
            record.dwDataLen = static_cast<DWORD>(image.size());
            record.pbData = buffer + sizeof(record);
            if (spoil) spoil(record);
            Bytes all(sizeof(record) + image.size());
            std::memcpy(all.data(), &record, sizeof(record));
            if (!image.empty())
                std::memcpy(all.data() + sizeof(record), image.data(), image.size());
            all.resize(length());
            std::memcpy(buffer, all.data(), all.size());
        }
    };
    std::vector<Attribute> attributes;
    std::vector<WORD> deleted;  // as asked for, in that order
    bool ascending = false;     // the order of GetAttributeIndices
    bool refusesToAdd = false;

    HRESULT STDMETHODCALLTYPE GetAttributeByName(WORD*, LPCWSTR name, WMT_ATTR_DATATYPE* type,
                                                 BYTE* value, WORD* length) override {
        for (const Attribute& one : attributes) {
            if (one.name != name) continue;
            if (one.length() > 0xFFFF) return E_UNEXPECTED;
            *type = one.type;
            const WORD room = *length;
            *length = static_cast<WORD>(one.length());
            if (!value) return S_OK;
            if (room < one.length()) return E_OUTOFMEMORY;
            one.writeTo(value);
            return S_OK;
        }
        return E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE GetAttributeIndices(WORD, LPCWSTR name, WORD* language, WORD* indices,
                                                  WORD* count) override {
        std::vector<WORD> found;
        for (std::size_t i = 0; i < attributes.size(); ++i)
            if (attributes[i].name == name && (!language || attributes[i].language == *language))
                found.push_back(static_cast<WORD>(i));
        if (!ascending) std::reverse(found.begin(), found.end());
        if (indices) std::copy(found.begin(), found.end(), indices);
        *count = static_cast<WORD>(found.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetAttributeByIndexEx(WORD, WORD index, LPWSTR name, WORD* nameLength,
                                                    WMT_ATTR_DATATYPE* type, WORD* language,
                                                    BYTE* value, DWORD* length) override {
        if (index >= attributes.size()) return E_INVALIDARG;
        const Attribute& one = attributes[index];
        if (name && *nameLength <= one.name.size()) return E_OUTOFMEMORY;
        if (name) std::wcscpy(name, one.name.c_str());
        *nameLength = static_cast<WORD>(one.name.size() + 1);
        *type = one.type;
        *language = one.language;
        const DWORD room = *length;
        *length = one.length();
        if (!value) return S_OK;
        if (room < one.length()) return E_OUTOFMEMORY;
        one.writeTo(value);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE AddAttribute(WORD, LPCWSTR name, WORD* index, WMT_ATTR_DATATYPE type,
                                           WORD language, const BYTE* value,
                                           DWORD length) override {
        if (refusesToAdd || length != sizeof(WM_PICTURE)) return E_INVALIDARG;
        WM_PICTURE record;
        std::memcpy(&record, value, sizeof(record));
        attributes.push_back(
            {name, language, type, Bytes(record.pbData, record.pbData + record.dwDataLen), {}, 0});
        *index = static_cast<WORD>(attributes.size() - 1);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DeleteAttribute(WORD, WORD index) override {
        deleted.push_back(index);
        if (index >= attributes.size()) return E_INVALIDARG;
        attributes.erase(attributes.begin() + index);
        return S_OK;
    }

    // ---- not used
#define ORVANE_UNUSED(name, ...) \
    HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    ORVANE_UNUSED(GetAttributeCount, WORD, WORD*)
    ORVANE_UNUSED(GetAttributeByIndex, WORD, WORD*, WCHAR*, WORD*, WMT_ATTR_DATATYPE*, BYTE*, WORD*)
    ORVANE_UNUSED(SetAttribute, WORD, LPCWSTR, WMT_ATTR_DATATYPE, const BYTE*, WORD)
    ORVANE_UNUSED(GetMarkerCount, WORD*)
    ORVANE_UNUSED(GetMarker, WORD, WCHAR*, WORD*, QWORD*)
    ORVANE_UNUSED(AddMarker, LPCWSTR_WMSDK_TYPE_SAFE, QWORD)
    ORVANE_UNUSED(RemoveMarker, WORD)
    ORVANE_UNUSED(GetScriptCount, WORD*)
    ORVANE_UNUSED(GetScript, WORD, WCHAR*, WORD*, WCHAR*, WORD*, QWORD*)
    ORVANE_UNUSED(AddScript, LPCWSTR_WMSDK_TYPE_SAFE, LPCWSTR_WMSDK_TYPE_SAFE, QWORD)
    ORVANE_UNUSED(RemoveScript, WORD)
    ORVANE_UNUSED(GetCodecInfoCount, DWORD*)
    ORVANE_UNUSED(GetCodecInfo, DWORD, WORD*, WCHAR*, WORD*, WCHAR*, WMT_CODEC_INFO_TYPE*, WORD*,
                  BYTE*)
    ORVANE_UNUSED(GetAttributeCountEx, WORD, WORD*)
    ORVANE_UNUSED(ModifyAttribute, WORD, WORD, WMT_ATTR_DATATYPE, WORD, const BYTE*, DWORD)
    ORVANE_UNUSED(AddCodecInfo, LPCWSTR_WMSDK_TYPE_SAFE, LPCWSTR_WMSDK_TYPE_SAFE,
                  WMT_CODEC_INFO_TYPE, WORD, BYTE*)
#undef ORVANE_UNUSED
};

#pragma GCC diagnostic pop

Bytes image(std::size_t size, BYTE seed = 1) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<BYTE>(seed + i * 7);
    return bytes;
}

FakeHeader::Attribute picture(Bytes bytes) {
    FakeHeader::Attribute attribute;
    attribute.image = std::move(bytes);
    return attribute;
}

Bytes readFrom(FakeHeader& header) {
    const auto read = EmbeddedPicture::read(&header);
    return read ? Bytes(read->image().begin(), read->image().end()) : Bytes();
}

// What real files show is left to the cover art tests; this is what a runtime may do.
TEST(EmbeddedPicture, IsTheFirstOfAnyLanguageHoweverTheIndicesAreOrdered) {
    for (const bool ascending : {false, true}) {
        FakeHeader header;
        header.ascending = ascending;
        EXPECT_FALSE(EmbeddedPicture::isIn(&header));
        header.attributes = {picture(image(70'000)), picture(image(20'000'000, 2))};
        header.attributes[0].language = 3;
        EXPECT_TRUE(EmbeddedPicture::isIn(&header));
        EXPECT_EQ(readFrom(header), image(70'000));
        std::swap(header.attributes[0], header.attributes[1]);
        EXPECT_EQ(readFrom(header), image(20'000'000, 2));
    }
}

TEST(EmbeddedPicture, ThatDoesNotHoldTogetherIsNone) {
    BYTE elsewhere[16] = {};
    const std::function<void(WM_PICTURE&)> faults[] = {
        [](WM_PICTURE& record) { record.dwDataLen += 1; },
        [](WM_PICTURE& record) { record.dwDataLen = 0xFFFFFFFF; },
        [](WM_PICTURE& record) { record.dwDataLen = 0; },
        [](WM_PICTURE& record) { record.pbData = nullptr; },
        [](WM_PICTURE& record) { record.pbData += record.dwDataLen + 1; },
        [](WM_PICTURE& record) { record.pbData -= sizeof(WM_PICTURE) + 1; },
        [&](WM_PICTURE& record) { record.pbData = elsewhere; },
        [](WM_PICTURE& record) { record.pbData = reinterpret_cast<BYTE*>(~std::uintptr_t{0}); }};
    for (const std::size_t size : {std::size_t{100}, std::size_t{70'000}})
        for (const auto& fault : faults) {
            FakeHeader header;
            header.attributes = {picture(image(size))};
            header.attributes[0].spoil = fault;
            EXPECT_TRUE(readFrom(header).empty()) << &fault - faults << " of " << size;
        }

    FakeHeader header;
    header.attributes = {picture(image(100))};
    header.attributes[0].valueLength = sizeof(WM_PICTURE) - 1;
    EXPECT_TRUE(readFrom(header).empty());
    header.attributes[0].valueLength = 0;
    header.attributes[0].type = WMT_TYPE_STRING;
    EXPECT_FALSE(EmbeddedPicture::isIn(&header));
    EXPECT_TRUE(readFrom(header).empty());
}

TEST(EmbeddedPicture, ReplacesAllOthersAndNothingElse) {
    for (const bool ascending : {false, true}) {
        FakeHeader header;
        header.ascending = ascending;
        header.attributes = {picture(image(10)),
                             {L"Title", 0, WMT_TYPE_STRING, image(10), {}, 0},
                             picture(image(70'000)),
                             {L"Author", 0, WMT_TYPE_STRING, image(10), {}, 0},
                             picture(image(30))};
        const Bytes wanted = image(90'000, 5);
        EXPECT_TRUE(EmbeddedPicture::replace(&header, wanted));
        EXPECT_EQ(header.deleted, (std::vector<WORD>{4, 2, 0}));
        ASSERT_EQ(header.attributes.size(), 3u);
        EXPECT_EQ(header.attributes[0].name, L"Title");
        EXPECT_EQ(header.attributes[1].name, L"Author");
        EXPECT_EQ(readFrom(header), wanted);
    }
}

TEST(EmbeddedPicture, IsNotReplacedByNothing) {
    FakeHeader header;
    header.attributes = {picture(image(10))};
    EXPECT_FALSE(EmbeddedPicture::replace(&header, {}));
    EXPECT_TRUE(header.deleted.empty());
    header.refusesToAdd = true;
    EXPECT_FALSE(EmbeddedPicture::replace(&header, image(10)));
}

}  // namespace
}  // namespace orvane
