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
    ~Com() { release(); }
    void release() {
        if (m_object) std::exchange(m_object, nullptr)->Release();
    }
    Interface* operator->() const { return m_object; }
    [[nodiscard]] Interface* get() const { return m_object; }
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

// A picture that keeps what its record points to.
struct OwnedPicture {
    std::wstring mime = L"image/jpeg";
    std::wstring description;
    Bytes data;
    [[nodiscard]] WM_PICTURE record() {
        return {mime.data(), 0, description.data(), static_cast<DWORD>(data.size()), data.data()};
    }
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
        m_before = sample();
        writeAll(track(), m_before);
        SetEnvironmentVariableW(L"ORVANE_STANDIN_FAIL_FLUSH", nullptr);
    }

    [[nodiscard]] std::filesystem::path track() const {
        return m_folder.path() / u"sakura 日本.wma";
    }
    [[nodiscard]] Bytes before() const { return m_before; }
    [[nodiscard]] const TempFolder& folder() const { return m_folder; }

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
    Com<IWMSyncReader> openReader() const {
        Com<IWMSyncReader> reader = newReader();
        EXPECT_EQ(reader->Open(track().c_str()), S_OK);
        return reader;
    }
    Com<IWMMetadataEditor2> newEditor() const {
        Com<IWMMetadataEditor> editor;
        EXPECT_EQ(function<decltype(WMCreateEditor)>("WMCreateEditor")(editor.put()), S_OK);
        return editor.as<IWMMetadataEditor2>();
    }
    HRESULT open(const Com<IWMMetadataEditor2>& editor) const {
        return editor->OpenEx(track().c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ);
    }
    static HRESULT add(const Com<IWMHeaderInfo3>& info, OwnedPicture picture) {
        WM_PICTURE record = picture.record();
        WORD index = 0;
        return info->AddAttribute(0, wm_format::pictureAttribute, &index, WMT_TYPE_BINARY, 0,
                                  reinterpret_cast<const BYTE*>(&record), sizeof(record));
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
        for (const Bytes& data : pictures)
            ASSERT_EQ(add(info, {.description = {}, .data = data}), S_OK);
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
        EXPECT_EQ(language, 0);
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

private:
    UniqueModule m_runtime;
    TempFolder m_folder;
    Bytes m_before;
};

TEST_F(Wmvcore, EmbedsAPictureAndLeavesTheAudio) {
    const Bytes cover = sample("cover.jpg");
    embed({cover});
    EXPECT_EQ(audioOf(readAll(track())), audioOf(before()));
    EXPECT_EQ(folder().files(), 1U);
    const Header header = parsed(readAll(track()));
    const auto stored = Picture::parse(header.find(pictureName)->value);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->type, 0);
    EXPECT_EQ(stored->mimeType, u"image/jpeg");
    EXPECT_TRUE(std::ranges::equal(stored->data, cover));

    const auto reader = openReader();
    const auto info = reader.as<IWMHeaderInfo3>();
    WORD stream = 0;
    WMT_ATTR_DATATYPE type{};
    WORD length = 0;
    ASSERT_EQ(info->GetAttributeByName(&stream, L"WM/Picture", &type, nullptr, &length), S_OK);
    EXPECT_EQ(type, WMT_TYPE_BINARY);
    Bytes buffer(length);
    WORD tooSmall = static_cast<WORD>(length - 1);
    EXPECT_EQ(info->GetAttributeByName(&stream, L"WM/Picture", &type, buffer.data(), &tooSmall),
              NS_E_SDK_BUFFERTOOSMALL);
    EXPECT_EQ(tooSmall, length);
    ASSERT_EQ(info->GetAttributeByName(&stream, L"WM/Picture", &type, buffer.data(), &length),
              S_OK);
    EXPECT_EQ(dataIn(buffer), cover);
    EXPECT_EQ(info->GetAttributeByName(&stream, L"WM/None", &type, nullptr, &length),
              ASF_E_NOTFOUND);
    // Nothing can be changed through a reader.
    EXPECT_EQ(info->DeleteAttribute(0, 0), E_NOTIMPL);
    EXPECT_EQ(add(info, {.description = {}, .data = cover}), E_NOTIMPL);
}

TEST_F(Wmvcore, SixteenBitLengthsEndWhereTheyDoOnWindows) {
    // The record, the two texts and the data together just fit, or just do not.
    constexpr std::size_t around = 18 + 22 + 2;
    for (const std::size_t size :
         {65'535 - around, 65'536 - around, std::size_t{70'000}, std::size_t{20'000'000}}) {
        writeAll(track(), before());
        Bytes data(size);
        std::iota(data.begin(), data.end(), std::uint8_t{1});
        embed({data});
        const auto reader = openReader();
        const auto info = reader.as<IWMHeaderInfo3>();
        WORD stream = 0;
        WORD length = 7;
        auto type = static_cast<WMT_ATTR_DATATYPE>(99);
        const HRESULT result =
            info->GetAttributeByName(&stream, L"WM/Picture", &type, nullptr, &length);
        if (size + around <= 65'535) {
            EXPECT_EQ(result, S_OK) << size;
            EXPECT_EQ(length, 65'535);
        } else {
            EXPECT_EQ(result, NS_E_SDK_BUFFERTOOSMALL) << size;
            EXPECT_EQ(length, 7);
            EXPECT_EQ(static_cast<int>(type), 99);
        }
        const auto found = indices(info);
        ASSERT_EQ(found.size(), 1U);
        EXPECT_TRUE(pictureAt(info, found[0]) == data) << size;
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
    EXPECT_TRUE(found[0] > found[1] && found[1] > found[2]);
    EXPECT_EQ(pictureAt(info, found[2]), Bytes(10, 1));
    EXPECT_EQ(pictureAt(info, found[0]), Bytes(30, 3));
    WORD all = 0;
    ASSERT_EQ(info->GetAttributeCountEx(0, &all), S_OK);
    for (const WORD index : found) EXPECT_EQ(info->DeleteAttribute(0, index), S_OK);
    EXPECT_TRUE(indices(info).empty());
    EXPECT_EQ(info->DeleteAttribute(0, all), NS_E_INVALID_REQUEST);
    ASSERT_EQ(add(info, {.description = {}, .data = Bytes(5, 9)}), S_OK);
    ASSERT_EQ(editor->Flush(), S_OK);
    const Header header = parsed(readAll(track()));
    EXPECT_EQ(header.attributes().size(), parsed(before()).attributes().size() + 1);
    EXPECT_EQ(textOf(header, u"Title"), u"さくら 🌸");

    // The other way round each deletion moves the next picture out of reach.
    writeAll(track(), before());
    embed({Bytes(10, 1), Bytes(20, 2)});
    const auto wrong = newEditor();
    ASSERT_EQ(open(wrong), S_OK);
    const auto wrongInfo = wrong.as<IWMHeaderInfo3>();
    const auto descending = indices(wrongInfo);
    for (auto index = descending.rbegin(); index != descending.rend(); ++index)
        wrongInfo->DeleteAttribute(0, *index);
    EXPECT_EQ(indices(wrongInfo).size(), 1U);
}

TEST_F(Wmvcore, OnlyFlushChangesTheFileAndInOneStep) {
    const auto size = [this] { return std::filesystem::file_size(track()); };
    {
        const auto editor = newEditor();
        ASSERT_EQ(open(editor), S_OK);
        ASSERT_EQ(add(editor.as<IWMHeaderInfo3>(), {.description = {}, .data = Bytes(99, 1)}),
                  S_OK);
    }
    EXPECT_EQ(readAll(track()), before());
    // A disk that becomes full, early and late.
    for (const auto room : {L"0", L"1", L"1000"}) {
        SetEnvironmentVariableW(L"ORVANE_STANDIN_FAIL_FLUSH", room);
        const auto editor = newEditor();
        ASSERT_EQ(open(editor), S_OK);
        ASSERT_EQ(add(editor.as<IWMHeaderInfo3>(), {.description = {}, .data = Bytes(99, 1)}),
                  S_OK);
        EXPECT_EQ(editor->Flush(), NS_E_FILE_WRITE);
        EXPECT_EQ(readAll(track()), before());
        EXPECT_EQ(folder().files(), 1U);
        // The file was closed all the same.
        EXPECT_EQ(editor->Flush(), ASF_E_INVALIDSTATE);
    }
    SetEnvironmentVariableW(L"ORVANE_STANDIN_FAIL_FLUSH", nullptr);
    const auto idle = newEditor();
    ASSERT_EQ(open(idle), S_OK);
    EXPECT_EQ(idle->Flush(), S_OK);
    EXPECT_EQ(size(), before().size());
    ASSERT_EQ(open(idle), S_OK);
    EXPECT_EQ(idle->Close(), S_OK);
}

TEST_F(Wmvcore, FilesThatCannotBeChangedAreRefusedWhenOpened) {
    const auto editor = newEditor();
    EXPECT_EQ(editor->OpenEx((track().wstring() + L"x").c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ),
              NS_E_FILE_NOT_FOUND);
    SetFileAttributesW(track().c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(open(editor), E_ACCESSDENIED);
    SetFileAttributesW(track().c_str(), FILE_ATTRIBUTE_NORMAL);
    {
        // A reader keeps the file until it is released.
        const auto reader = openReader();
        EXPECT_EQ(open(editor), NS_E_FILE_OPEN_FAILED);
    }
    ASSERT_EQ(open(editor), S_OK);
    EXPECT_EQ(open(editor), ASF_E_INVALIDSTATE);
    // Others may read meanwhile, not write.
    const UniqueFile other(CreateFileW(track().c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_FALSE(other);
    EXPECT_EQ(readAll(track()), before());
    EXPECT_EQ(editor->Close(), S_OK);

    writeAll(track(), Bytes(4'000, 0x30));
    EXPECT_EQ(open(editor), NS_E_INVALID_INPUT_FORMAT);
    EXPECT_EQ(newReader()->Open(track().c_str()), NS_E_INVALID_INPUT_FORMAT);
    EXPECT_EQ(newReader()->Open(nullptr), E_POINTER);
}

TEST_F(Wmvcore, BadCallsGetErrors) {
    const auto editor = newEditor();
    const auto info = editor.as<IWMHeaderInfo3>();
    WORD count = 0;
    EXPECT_EQ(info->GetAttributeCountEx(0, &count), ASF_E_INVALIDSTATE);
    EXPECT_EQ(info->DeleteAttribute(0, 0), ASF_E_INVALIDSTATE);
    ASSERT_EQ(open(editor), S_OK);
    OwnedPicture picture{.description = {}, .data = Bytes(5, 1)};
    WM_PICTURE record = picture.record();
    const auto addRecord = [&](WORD stream, WORD language, DWORD length) {
        return info->AddAttribute(stream, L"WM/Picture", nullptr, WMT_TYPE_BINARY, language,
                                  reinterpret_cast<const BYTE*>(&record), length);
    };
    EXPECT_EQ(addRecord(0, 0, sizeof(record) - 1), NS_E_SDK_BUFFERTOOSMALL);
    EXPECT_EQ(addRecord(128, 0, sizeof(record)), NS_E_INVALID_REQUEST);
    EXPECT_EQ(addRecord(0, 1, sizeof(record)), ASF_E_BADLANGUAGEID);
    record.pwszMIMEType = nullptr;
    EXPECT_EQ(addRecord(0, 0, sizeof(record)), E_POINTER);
    const DWORD number = 5;
    const auto* const bytes = reinterpret_cast<const BYTE*>(&number);
    EXPECT_EQ(info->AddAttribute(0, L"n", nullptr, WMT_TYPE_DWORD, 0, bytes, 3), E_INVALIDARG);
    EXPECT_EQ(info->AddAttribute(0, L"n", nullptr, WMT_TYPE_STRING, 0, bytes, 3), E_INVALIDARG);
    EXPECT_EQ(info->AddAttribute(0, nullptr, nullptr, WMT_TYPE_DWORD, 0, bytes, 4), E_POINTER);
    EXPECT_EQ(info->SetAttribute(0, L"none", WMT_TYPE_STRING, nullptr, 0), ASF_E_NOTFOUND);
    // None of it was a change.
    EXPECT_EQ(editor->Flush(), S_OK);
    EXPECT_EQ(readAll(track()), before());

    // A picture in the file that is none is an error to read, not a crash, and can be deleted.
    Header broken = parsed(before());
    broken.attributes().push_back(bytesAttribute(pictureName, Bytes{0, 255, 255, 255, 255, 65, 0}));
    std::string error;
    ASSERT_TRUE(replaceHeader(track(), broken, error)) << error;
    ASSERT_EQ(open(editor), S_OK);
    WORD stream = 0;
    WORD length = 0;
    WMT_ATTR_DATATYPE type{};
    EXPECT_EQ(info->GetAttributeByName(&stream, L"WM/Picture", &type, nullptr, &length),
              NS_E_INVALID_DATA);
    ASSERT_EQ(indices(info).size(), 1U);
    EXPECT_EQ(info->DeleteAttribute(0, indices(info)[0]), S_OK);
    EXPECT_EQ(editor->Flush(), S_OK);
    EXPECT_EQ(readAll(track()), before());
}

TEST_F(Wmvcore, TextAndNumbersComeAndGo) {
    const auto editor = newEditor();
    ASSERT_EQ(open(editor), S_OK);
    const auto info = editor.as<IWMHeaderInfo3>();
    const std::wstring title = L"Neuer Titel é";
    const auto bytesOf = [](const void* value) { return static_cast<const BYTE*>(value); };
    ASSERT_EQ(info->SetAttribute(0, L"Title", WMT_TYPE_STRING, bytesOf(title.c_str()),
                                 static_cast<WORD>((title.size() + 1) * 2)),
              S_OK);
    const DWORD track5 = 5;
    WORD index = 0;
    ASSERT_EQ(info->AddAttribute(0, L"WM/Track", &index, WMT_TYPE_DWORD, 0, bytesOf(&track5), 4),
              S_OK);
    const DWORD track6 = 6;
    ASSERT_EQ(info->ModifyAttribute(0, index, WMT_TYPE_DWORD, 0, bytesOf(&track6), 4), S_OK);
    const BOOL truth = TRUE;
    ASSERT_EQ(info->AddAttribute(1, L"IsVBR", &index, WMT_TYPE_BOOL, 0, bytesOf(&truth), 4), S_OK);
    EXPECT_EQ(index, 0);
    ASSERT_EQ(editor->Flush(), S_OK);

    const auto reader = openReader();
    const auto read = reader.as<IWMHeaderInfo>();
    WORD stream = 0;
    WMT_ATTR_DATATYPE type{};
    wchar_t text[64] = {};
    WORD length = sizeof(text);
    ASSERT_EQ(
        read->GetAttributeByName(&stream, L"Title", &type, reinterpret_cast<BYTE*>(text), &length),
        S_OK);
    EXPECT_EQ(type, WMT_TYPE_STRING);
    EXPECT_EQ(text, title);
    EXPECT_EQ(length, (title.size() + 1) * 2);
    DWORD number = 0;
    length = sizeof(number);
    ASSERT_EQ(read->GetAttributeByName(&stream, L"WM/Track", &type,
                                       reinterpret_cast<BYTE*>(&number), &length),
              S_OK);
    EXPECT_EQ(number, 6U);
    stream = 1;
    WORD nameLength = 64;
    length = sizeof(number);
    ASSERT_EQ(read->GetAttributeByIndex(0, &stream, text, &nameLength, &type,
                                        reinterpret_cast<BYTE*>(&number), &length),
              S_OK);
    EXPECT_STREQ(text, L"IsVBR");
    EXPECT_EQ(type, WMT_TYPE_BOOL);
    EXPECT_EQ(number, 1U);
}

}  // namespace
}  // namespace orvane::asf::test
