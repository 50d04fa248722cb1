// The stand-in Format runtime, loaded and called as its users do, on real files.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <filesystem>
#include <numeric>
#include <string>

#include "platform/handles.h"
#include "platform/wm_format.h"
#include "standins/asf/picture.h"
#include "tests/asf/asf_test_files.h"

namespace orvane::asf::test {
namespace {

template <typename Interface>
class Com {
public:
    Com() = default;
    Com(Com&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Com& operator=(Com&&) = delete;
    ~Com() {
        if (m_object) m_object->Release();
    }
    Interface* operator->() const { return m_object; }
    Interface** put() { return &m_object; }
    template <typename Other>
    [[nodiscard]] Com<Other> as() const {
        Com<Other> other;
        void* found = nullptr;
        EXPECT_EQ(m_object->QueryInterface(__uuidof(Other), &found), S_OK);
        *other.put() = static_cast<Other*>(found);
        return other;
    }

private:
    Interface* m_object = nullptr;
};

class Wmvcore : public testing::Test {
protected:
    void SetUp() override {
        m_runtime.reset(LoadLibraryW(L"wmvcore.dll"));
        ASSERT_TRUE(m_runtime);
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(m_runtime.get(), path, MAX_PATH);
        wchar_t program[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        ASSERT_EQ(std::filesystem::path(path).parent_path(),
                  std::filesystem::path(program).parent_path());
        writeAll(m_track, m_before);
    }

    template <typename Function>
    Function* function(const char* name) const {
        const FARPROC found = GetProcAddress(m_runtime.get(), name);
        EXPECT_NE(found, nullptr) << name;
        Function* typed = nullptr;
        std::memcpy(&typed, &found, sizeof(found));
        return typed;
    }
    Com<IWMSyncReader> newReader() const {
        Com<IWMSyncReader> reader;
        EXPECT_EQ(
            function<decltype(WMCreateSyncReader)>("WMCreateSyncReader")(nullptr, 0, reader.put()),
            S_OK);
        return reader;
    }
    Com<IWMMetadataEditor2> newEditor() const {
        Com<IWMMetadataEditor> editor;
        EXPECT_EQ(function<decltype(WMCreateEditor)>("WMCreateEditor")(editor.put()), S_OK);
        return editor.as<IWMMetadataEditor2>();
    }
    HRESULT open(const Com<IWMMetadataEditor2>& editor) const {
        return editor->OpenEx(m_track.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ);
    }
    static HRESULT add(const Com<IWMHeaderInfo3>& info, Bytes data,
                       DWORD length = sizeof(WM_PICTURE)) {
        std::wstring mime = L"image/jpeg";
        std::wstring description;
        WM_PICTURE record = {mime.data(), 0, description.data(), static_cast<DWORD>(data.size()),
                             data.data()};
        return info->AddAttribute(0, wm_format::pictureAttribute, nullptr, WMT_TYPE_BINARY, 0,
                                  reinterpret_cast<const BYTE*>(&record), length);
    }
    static std::vector<WORD> indices(const Com<IWMHeaderInfo3>& info) {
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
        const auto info = editor.as<IWMHeaderInfo3>();
        for (const Bytes& data : pictures) ASSERT_EQ(add(info, data), S_OK);
        ASSERT_EQ(editor->Flush(), S_OK);
    }
    // The picture's data as the 32-bit method gives it, checked to lie within the buffer.
    static Bytes pictureAt(const Com<IWMHeaderInfo3>& info, WORD index) {
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
        EXPECT_STREQ(name.c_str(), L"WM/Picture");
        return dataIn(buffer);
    }
    static Bytes dataIn(const Bytes& buffer) {
        WM_PICTURE record;
        if (buffer.size() < sizeof(record)) return {};
        std::memcpy(&record, buffer.data(), sizeof(record));
        EXPECT_STREQ(record.pwszMIMEType, L"image/jpeg");
        EXPECT_STREQ(record.pwszDescription, L"");
        EXPECT_GE(record.pbData, buffer.data());
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
        const auto info = reader.as<IWMHeaderInfo3>();
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
    const auto info = editor.as<IWMHeaderInfo3>();
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
        EXPECT_EQ(add(editor.as<IWMHeaderInfo3>(), Bytes(99, 1)), S_OK);
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

TEST_F(Wmvcore, FilesThatCannotBeChangedAreRefusedWhenOpened) {
    const auto editor = newEditor();
    EXPECT_EQ(editor->Open((m_track.wstring() + L"x").c_str()), NS_E_FILE_NOT_FOUND);
    SetFileAttributesW(m_track.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(open(editor), E_ACCESSDENIED);
    SetFileAttributesW(m_track.c_str(), FILE_ATTRIBUTE_NORMAL);
    {
        // A reader keeps the file until it is released.
        const auto reader = newReader();
        EXPECT_EQ(reader->Open(m_track.c_str()), S_OK);
        EXPECT_EQ(open(editor), NS_E_FILE_OPEN_FAILED);
    }
    ASSERT_EQ(open(editor), S_OK);
    EXPECT_EQ(open(editor), ASF_E_INVALIDSTATE);
    // Others may read meanwhile, not write.
    const UniqueFile other(CreateFileW(m_track.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_FALSE(other);
    EXPECT_EQ(readAll(m_track), m_before);
    EXPECT_EQ(editor->Close(), S_OK);
    writeAll(m_track, Bytes(4'000, 0x30));
    EXPECT_EQ(open(editor), NS_E_INVALID_INPUT_FORMAT);
    EXPECT_EQ(newReader()->Open(m_track.c_str()), NS_E_INVALID_INPUT_FORMAT);
}

TEST_F(Wmvcore, BadCallsAndBadPicturesGetErrors) {
    const auto editor = newEditor();
    const auto info = editor.as<IWMHeaderInfo3>();
    EXPECT_EQ(info->DeleteAttribute(0, 0), ASF_E_INVALIDSTATE);
    ASSERT_EQ(open(editor), S_OK);
    EXPECT_EQ(add(info, Bytes(5, 1), sizeof(WM_PICTURE) - 1), NS_E_SDK_BUFFERTOOSMALL);
    EXPECT_EQ(info->DeleteAttribute(0, 999), NS_E_INVALID_REQUEST);
    // None of it was a change.
    EXPECT_EQ(editor->Flush(), S_OK);
    EXPECT_EQ(readAll(m_track), m_before);

    // A picture in the file that is none is an error to read, not a crash, and can be deleted.
    Header broken = parsed(m_before);
    broken.attributes().push_back(bytesAttribute(pictureName, Bytes{0, 255, 255, 255, 255, 65, 0}));
    std::string error;
    ASSERT_TRUE(replaceHeader(m_track, broken, error)) << error;
    ASSERT_EQ(open(editor), S_OK);
    WORD stream = 0;
    WORD length = 0;
    WMT_ATTR_DATATYPE type{};
    EXPECT_EQ(info->GetAttributeByName(&stream, L"WM/Picture", &type, nullptr, &length),
              NS_E_INVALID_DATA);
    ASSERT_EQ(indices(info).size(), 1U);
    EXPECT_EQ(info->DeleteAttribute(0, indices(info)[0]), S_OK);
    EXPECT_EQ(editor->Flush(), S_OK);
    EXPECT_EQ(readAll(m_track), m_before);
}

}  // namespace
}  // namespace orvane::asf::test
