// The stand-in Format runtime, loaded and called as its users do, on real files.

#include <windows.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <filesystem>
#include <numeric>
#include <string>

#include "platform/atl/atlbase.h"
#include "platform/handles.h"
#include "platform/wm_format.h"
#include "standins/asf/picture.h"
#include "tests/standins/asf/asf_test_files.h"

namespace orvane::asf::test {
namespace {

class Wmvcore : public testing::Test {
protected:
    void SetUp() override {
        m_runtime.reset(LoadLibraryW(L"wmvcore.dll"));
        ASSERT_TRUE(m_runtime);
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(m_runtime.get(), path, MAX_PATH);
        ASSERT_EQ(std::filesystem::path(path).parent_path(), std::filesystem::current_path())
            << "Wine's own";
        writeAll(m_track, m_before);
    }

    template <typename Function>
    Function* function(const char* name) const {
        return std::bit_cast<Function*>(GetProcAddress(m_runtime.get(), name));
    }
    CComPtr<IWMSyncReader> newReader() const {
        CComPtr<IWMSyncReader> reader;
        EXPECT_EQ(function<decltype(WMCreateSyncReader)>("WMCreateSyncReader")(nullptr, 0, &reader),
                  S_OK);
        return reader;
    }
    CComPtr<IWMMetadataEditor2> newEditor() const {
        CComPtr<IWMMetadataEditor> editor;
        EXPECT_EQ(function<decltype(WMCreateEditor)>("WMCreateEditor")(&editor), S_OK);
        return as<IWMMetadataEditor2>(editor);
    }
    template <typename Other, typename Interface>
    static CComPtr<Other> as(const CComPtr<Interface>& object) {
        CComPtr<Other> other;
        EXPECT_EQ(object.QueryInterface(&other), S_OK);
        return other;
    }
    HRESULT open(const CComPtr<IWMMetadataEditor2>& editor) const {
        return editor->OpenEx(m_track.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ);
    }
    static HRESULT add(const CComPtr<IWMHeaderInfo3>& info, Bytes data,
                       DWORD length = sizeof(WM_PICTURE)) {
        std::wstring mime = L"image/jpeg";
        std::wstring description;
        WM_PICTURE record = {mime.data(), 0, description.data(), static_cast<DWORD>(data.size()),
                             data.data()};
        return info->AddAttribute(0, wm_format::kPictureAttribute, nullptr, WMT_TYPE_BINARY, 0,
                                  reinterpret_cast<const BYTE*>(&record), length);
    }
    static std::vector<WORD> indices(const CComPtr<IWMHeaderInfo3>& info) {
        WORD language = 0;
        WORD count = 0;
        EXPECT_EQ(info->GetAttributeIndices(0, L"WM/Picture", &language, nullptr, &count), S_OK);
        std::vector<WORD> found(count);
        EXPECT_EQ(info->GetAttributeIndices(0, L"WM/Picture", &language, found.data(), &count),
                  S_OK);
        return found;
    }
    void embed(const std::vector<Bytes>& pictures) const {
        const auto editor = newEditor();
        ASSERT_EQ(open(editor), S_OK);
        const auto info = as<IWMHeaderInfo3>(editor);
        for (const Bytes& data : pictures) ASSERT_EQ(add(info, data), S_OK);
        ASSERT_EQ(editor->Flush(), S_OK);
    }
    // The picture's data as the 32-bit method gives it, checked to lie within the buffer.
    static Bytes pictureAt(const CComPtr<IWMHeaderInfo3>& info, WORD index) {
        WORD nameLength = 0;
        WORD language = 9;
        WMT_ATTR_DATATYPE type{};
        DWORD length = 0;
        EXPECT_EQ(info->GetAttributeByIndexEx(0, index, nullptr, &nameLength, &type, &language,
                                              nullptr, &length),
                  S_OK);
        EXPECT_EQ(type, WMT_TYPE_BINARY);
        Bytes buffer(length);
        std::wstring name(nameLength, L'?');
        EXPECT_EQ(info->GetAttributeByIndexEx(0, index, name.data(), &nameLength, &type, &language,
                                              buffer.data(), &length),
                  S_OK);
        return dataIn(buffer);
    }
    static Bytes dataIn(const Bytes& buffer) {
        WM_PICTURE record;
        if (buffer.size() < sizeof(record)) return {};
        std::memcpy(&record, buffer.data(), sizeof(record));
        EXPECT_STREQ(record.pwszMIMEType, L"image/jpeg");
        EXPECT_STREQ(record.pwszDescription, L"");
        EXPECT_EQ(record.pbData + record.dwDataLen, buffer.data() + buffer.size());
        return {record.pbData, record.pbData + record.dwDataLen};
    }

    UniqueModule m_runtime;
    TempFolder m_folder;
    std::filesystem::path m_track = m_folder.path() / u"sakura 日本.wma";
    Bytes m_before = sample();
};

TEST_F(Wmvcore, GivesAPictureBackAndKeepsTheLimitOf16Bits) {
    // The record, the two texts and the data together just fit, or just do not.
    constexpr std::size_t around = 18 + 22 + 2;
    for (const std::size_t size :
         {std::size_t{300}, 65'535 - around, 65'536 - around, std::size_t{20'000'000}}) {
        writeAll(m_track, m_before);
        Bytes data(size);
        std::iota(data.begin(), data.end(), std::uint8_t{1});
        embed({data});
        EXPECT_EQ(audioOf(readAll(m_track)), audioOf(m_before));
        const auto reader = newReader();
        ASSERT_EQ(reader->Open(m_track.c_str()), S_OK);
        const auto info = as<IWMHeaderInfo3>(reader);
        WORD stream = 0;
        WORD length = 7;
        auto type = static_cast<WMT_ATTR_DATATYPE>(99);
        const auto get = [&](BYTE* value) {
            return info->GetAttributeByName(&stream, L"WM/Picture", &type, value, &length);
        };
        if (size + around <= 65'535) {
            ASSERT_EQ(get(nullptr), S_OK) << size;
            EXPECT_EQ(length, size + around);
            Bytes buffer(length);
            --length;
            EXPECT_EQ(get(buffer.data()), NS_E_SDK_BUFFERTOOSMALL);
            ASSERT_EQ(get(buffer.data()), S_OK);
            EXPECT_TRUE(dataIn(buffer) == data);
        } else {
            EXPECT_EQ(get(nullptr), NS_E_SDK_BUFFERTOOSMALL) << size;
            EXPECT_EQ(length, 7);
            EXPECT_EQ(static_cast<int>(type), 99);
        }
        ASSERT_EQ(indices(info).size(), 1U);
        EXPECT_TRUE(pictureAt(info, indices(info)[0]) == data) << size;
        // Nothing can be changed through a reader.
        EXPECT_EQ(info->DeleteAttribute(0, 0), E_NOTIMPL);
        EXPECT_EQ(add(info, data), E_NOTIMPL);
    }
}

TEST_F(Wmvcore, IndicesDescendSoThatDeletingInTheirOrderDeletesEach) {
    embed({Bytes(10, 1), Bytes(70'000, 2), Bytes(30, 3)});
    const auto editor = newEditor();
    ASSERT_EQ(open(editor), S_OK);
    const auto info = as<IWMHeaderInfo3>(editor);
    WORD language = 0;
    WORD count = 2;
    WORD two[2] = {};
    EXPECT_EQ(info->GetAttributeIndices(0, L"WM/Picture", &language, two, &count),
              NS_E_SDK_BUFFERTOOSMALL);
    EXPECT_EQ(count, 3);
    const auto found = indices(info);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(pictureAt(info, found[2]), Bytes(10, 1));
    EXPECT_EQ(pictureAt(info, found[0]), Bytes(30, 3));
    for (const WORD index : found) EXPECT_EQ(info->DeleteAttribute(0, index), S_OK);
    EXPECT_TRUE(indices(info).empty());
    ASSERT_EQ(editor->Flush(), S_OK);
    EXPECT_EQ(parsed(readAll(m_track)).attributes().size(), parsed(m_before).attributes().size());

    // The other way round each deletion moves the next picture out of reach.
    embed({Bytes(10, 1), Bytes(20, 2)});
    ASSERT_EQ(open(editor), S_OK);
    const auto descending = indices(info);
    for (auto index = descending.rbegin(); index != descending.rend(); ++index)
        info->DeleteAttribute(0, *index);
    EXPECT_EQ(indices(info).size(), 1U);
}

TEST_F(Wmvcore, OnlyFlushChangesTheFileAndInOneStep) {
    const auto change = [this](const wchar_t* diskFullAfter) {
        SetEnvironmentVariableW(L"ORVANE_STANDIN_FAIL_FLUSH", diskFullAfter);
        auto editor = newEditor();
        EXPECT_EQ(open(editor), S_OK);
        EXPECT_EQ(add(as<IWMHeaderInfo3>(editor), Bytes(99, 1)), S_OK);
        return editor;
    };
    change(nullptr);  // released without a Flush
    EXPECT_EQ(readAll(m_track), m_before);
    // A disk that becomes full, early and late.
    for (const auto* const room : {L"0", L"1000"}) {
        const auto editor = change(room);
        EXPECT_EQ(editor->Flush(), NS_E_FILE_WRITE);
        EXPECT_EQ(readAll(m_track), m_before);
        EXPECT_EQ(m_folder.files(), 1U);
        // The file was closed all the same.
        EXPECT_EQ(editor->Flush(), ASF_E_INVALIDSTATE);
    }
    SetEnvironmentVariableW(L"ORVANE_STANDIN_FAIL_FLUSH", nullptr);
}

}  // namespace
}  // namespace orvane::asf::test
