#include "media/embedded_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "media/step_log.h"
#include "standins/format/header_info.h"
#include "tests/media/track_folder.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

using test::Bytes;
using test::pictureAttribute;
using test::someImage;

// A real track's header that the stand-in runtime shows, and what another runtime may answer.
class OddHeader final : public standin::HeaderInfo {
public:
    OddHeader() : HeaderInfo(Kind::editor) {
        EXPECT_EQ(file().open(m_folder.track().c_str(), GENERIC_READ | GENERIC_WRITE, 0), S_OK);
        attributes().resize(2);
    }
    std::vector<asf::Attribute>& attributes() { return file().changedHeader().attributes(); }

    bool ascending = false;  // the order of GetAttributeIndices
    bool refusesToAdd = false;
    WMT_ATTR_DATATYPE type = WMT_TYPE_BINARY;
    DWORD cutTo = MAXDWORD;
    // What the record claims, instead of what there is; and where the whole value begins.
    std::function<void(WM_PICTURE&, BYTE*)> spoil;

    STDMETHOD(GetAttributeByName)
    (WORD* stream, LPCWSTR name, WMT_ATTR_DATATYPE* shown, BYTE* value, WORD* length) override {
        return lie(HeaderInfo::GetAttributeByName(stream, name, shown, value, length), shown, value,
                   length);
    }
    STDMETHOD(GetAttributeIndices)
    (WORD stream, LPCWSTR name, WORD* language, WORD* indices, WORD* count) override {
        const auto result = HeaderInfo::GetAttributeIndices(stream, name, language, indices, count);
        if (ascending && indices != nullptr) std::reverse(indices, indices + *count);
        return result;
    }
    STDMETHOD(GetAttributeByIndexEx)
    (WORD stream, WORD index, LPWSTR name, WORD* nameLength, WMT_ATTR_DATATYPE* shown,
     WORD* language, BYTE* value, DWORD* length) override {
        return lie(HeaderInfo::GetAttributeByIndexEx(stream, index, name, nameLength, shown,
                                                     language, value, length),
                   shown, value, length);
    }
    STDMETHOD(AddAttribute)
    (WORD stream, LPCWSTR name, WORD* index, WMT_ATTR_DATATYPE given, WORD language,
     const BYTE* value, DWORD length) override {
        if (refusesToAdd) return E_FAIL;
        return HeaderInfo::AddAttribute(stream, name, index, given, language, value, length);
    }
    STDMETHOD(QueryInterface)(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHOD_(ULONG, AddRef)() override { return 1; }
    STDMETHOD_(ULONG, Release)() override { return 1; }

private:
    template <typename Length>
    HRESULT lie(HRESULT result, WMT_ATTR_DATATYPE* shown, BYTE* value, Length* length) const {
        if (FAILED(result)) return result;
        *shown = type;
        *length = static_cast<Length>(std::min<DWORD>(*length, cutTo));
        if (value == nullptr || !spoil) return result;
        WM_PICTURE record;
        std::memcpy(&record, value, sizeof(record));
        spoil(record, value);
        std::memcpy(value, &record, sizeof(record));
        return result;
    }

    test::TrackFolder m_folder;
};

Bytes readFrom(OddHeader& header) {
    const auto read = EmbeddedPicture::read(&header);
    return read ? Bytes(read->image().begin(), read->image().end()) : Bytes();
}

TEST(EmbeddedPicture, IsTheOneWithTheLowestIndexOfAnyLanguage) {
    const asf::Attribute first = pictureAttribute(someImage(70'000), 3);
    const asf::Attribute second = pictureAttribute(someImage(50, 2));
    for (const bool ascending : {false, true}) {
        OddHeader header;
        header.ascending = ascending;
        EXPECT_FALSE(EmbeddedPicture::isIn(&header));
        header.attributes() = {first, second};
        EXPECT_TRUE(EmbeddedPicture::isIn(&header));
        EXPECT_EQ(readFrom(header), someImage(70'000));
        header.attributes() = {second, first};
        EXPECT_EQ(readFrom(header), someImage(50, 2));
    }
}

TEST(EmbeddedPicture, ADamagedRecordIsNoPicture) {
    BYTE elsewhere[16] = {};
    const std::function<void(WM_PICTURE&, BYTE*)> faults[] = {
        [](WM_PICTURE& record, BYTE*) { record.dwDataLen += 1; },
        [](WM_PICTURE& record, BYTE*) { record.dwDataLen = 0xFFFFFFFF; },
        [](WM_PICTURE& record, BYTE*) { record.dwDataLen = 0; },
        [](WM_PICTURE& record, BYTE*) { record.pbData = nullptr; },
        [](WM_PICTURE& record, BYTE*) { record.pbData += record.dwDataLen + 1; },
        [](WM_PICTURE& record, BYTE* value) { record.pbData = value - 1; },
        [&](WM_PICTURE& record, BYTE*) { record.pbData = elsewhere; },
        [](WM_PICTURE& record, BYTE*) {
            record.pbData = reinterpret_cast<BYTE*>(~std::uintptr_t{0});
        }};
    for (const std::size_t size : {100, 70'000}) {
        OddHeader header;
        header.attributes() = {pictureAttribute(someImage(size))};
        EXPECT_EQ(readFrom(header), someImage(size));
        for (const auto& fault : faults) {
            header.spoil = fault;
            EXPECT_TRUE(readFrom(header).empty()) << &fault - faults << " of " << size;
        }
        header.spoil = nullptr;
        header.cutTo = sizeof(WM_PICTURE) - 1;
        EXPECT_TRUE(readFrom(header).empty());
        header.cutTo = MAXDWORD;
        header.type = WMT_TYPE_STRING;
        EXPECT_FALSE(EmbeddedPicture::isIn(&header));
        EXPECT_TRUE(readFrom(header).empty());
    }
}

TEST(EmbeddedPicture, ReplacesAllOthersAndNothingElse) {
    for (const bool ascending : {false, true}) {
        OddHeader header;
        header.ascending = ascending;
        const auto tags = header.attributes();
        const asf::Attribute foreign = pictureAttribute(someImage(9), 3);
        header.attributes() = {pictureAttribute(someImage(10)),     tags[0],
                               pictureAttribute(someImage(70'000)), tags[1],
                               pictureAttribute(someImage(30)),     foreign};
        const StepLog steps("test", "a.wma");
        EXPECT_FALSE(EmbeddedPicture::replace(&header, {}, steps));
        EXPECT_EQ(header.attributes().size(), 6U);
        EXPECT_TRUE(EmbeddedPicture::replace(&header, someImage(90'000, 5), steps));
        ASSERT_EQ(header.attributes().size(), 3U) << "another language's went as well";
        EXPECT_EQ(header.attributes()[0].name, tags[0].name);
        EXPECT_EQ(header.attributes()[1].name, tags[1].name);
        EXPECT_EQ(readFrom(header), someImage(90'000, 5));
        header.refusesToAdd = true;
        test::CapturedLog log;
        EXPECT_FALSE(EmbeddedPicture::replace(&header, someImage(10), steps));
        EXPECT_EQ(log.take(), "<3> test: AddAttribute failed for a.wma (0x80004005)\n");
    }
}

}  // namespace
}  // namespace orvane
