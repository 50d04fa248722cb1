#include <algorithm>
#include <optional>

#include "standins/asf/asf_file.h"
#include "standins/player/track.h"
#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

using TagsTest = PlayerTest;

std::optional<asf::Header> headerOf(const std::filesystem::path& path) {
    std::string error;
    auto header = asf::readHeader(path, error);
    EXPECT_TRUE(header) << error;
    return header;
}

std::wstring tagInFile(const std::filesystem::path& path, const char16_t* name) {
    const auto header = headerOf(path);
    const asf::Attribute* attribute = header ? header->find(name) : nullptr;
    if (attribute == nullptr) return L"(none)";
    const std::u16string text = attribute->text();
    return {text.begin(), text.end()};
}

// What follows the header: the sound.
std::string audioOf(const std::filesystem::path& path, const std::string& bytes) {
    std::ifstream file(path, std::ios::binary);
    std::uint64_t headerSize = 0;
    file.seekg(16);
    file.read(reinterpret_cast<char*>(&headerSize), sizeof(headerSize));
    return headerSize < bytes.size() ? bytes.substr(static_cast<size_t>(headerSize)) : "";
}

TEST_F(TagsTest, WhatIsWrittenLiesInTheFileAndTheSoundIsUntouched) {
    const auto path = sample(L"é 日本.wma");
    const std::string sound = audioOf(path, bytesOf(path));
    ASSERT_FALSE(sound.empty());
    const auto item = start().item(0);
    ASSERT_TRUE(item);
    EXPECT_EQ(read(item, L"Title"), L"scarborough FAIR");

    struct Case {
        const wchar_t* attribute;
        const char16_t* tag;
        const wchar_t* value;
    };
    for (const Case& c : {Case{L"Title", u"Title", L"Scarborough Fair"},
                          Case{L"Author", u"Author", L"日本 \U0001F3B5"},
                          Case{L"WM/AlbumArtist", u"WM/AlbumArtist", L"Various"},
                          Case{L"WM/TrackNumber", u"WM/TrackNumber", L"7"},
                          Case{L"WM/PartOfSet", u"WM/PartOfSet", L"2/2"},
                          Case{L"WM/UniqueFileIdentifier", u"WM/UniqueFileIdentifier", L"OV-1"},
                          Case{L"Description", u"Description", L"a \"comment\" & more"}}) {
        EXPECT_EQ(write(item, c.attribute, c.value), S_OK) << toUtf8(c.attribute);
        EXPECT_EQ(read(item, c.attribute), c.value);
        EXPECT_EQ(tagInFile(path, c.tag), c.value);
    }
    EXPECT_EQ(write(item, L"WM/PartOfSet", L""), S_OK);
    EXPECT_EQ(tagInFile(path, u"WM/PartOfSet"), L"(none)");
    EXPECT_EQ(read(item, L"WM/PartOfSet"), L"");
    EXPECT_TRUE(audioOf(path, bytesOf(path)) == sound);
    EXPECT_EQ(read(start().item(0), L"Title"), L"Scarborough Fair")
        << "not kept for the next start";
}

TEST_F(TagsTest, ADateIsKeptAsItsYear) {
    const auto path = sample(L"one.wma");
    const auto item = start().item(0);
    EXPECT_EQ(read(item, L"ReleaseDateYear"), L"1998");
    EXPECT_EQ(write(item, L"ReleaseDate", L"1/1/1999 04:20:00 PM"), S_OK);
    EXPECT_EQ(tagInFile(path, u"WM/Year"), L"1999");
    EXPECT_EQ(read(item, L"ReleaseDateYear"), L"1999");

    const std::string before = bytesOf(path);
    for (const wchar_t* wrong : {L"1/1/ 04:20:00 PM", L"1/1/99 04:20:00 PM", L"1/1/late", L"x"})
        EXPECT_EQ(write(item, L"ReleaseDate", wrong), E_INVALIDARG) << toUtf8(wrong);
    EXPECT_TRUE(bytesOf(path) == before);
}

TEST_F(TagsTest, ARefusedWriteLeavesTheFileWhole) {
    const auto path = sample(L"one.wma");
    PlayerOptions options;
    options.library = m_folder;
    options.failWrites = {L"WM/Genre"};
    options.failReads = {L"WM/WMCollectionID"};
    const auto item = start(options).item(0);
    const std::string before = bytesOf(path);

    for (const wchar_t* fixed : {L"Bitrate", L"SourceURL", L"ReleaseDateYear", L"WM/Genre"})
        EXPECT_TRUE(FAILED(write(item, fixed, L"1"))) << toUtf8(fixed);
    BSTR text = nullptr;
    EXPECT_TRUE(FAILED(item->getItemInfo(Text(L"WM/WMCollectionID").get(), &text)));
    EXPECT_EQ(text, nullptr);

    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(FAILED(write(item, L"Title", L"new")));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(bytesOf(path) == before);

    HANDLE locked = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                0, nullptr);
    ASSERT_NE(locked, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(FAILED(write(item, L"Title", L"new")));
    CloseHandle(locked);
    EXPECT_TRUE(bytesOf(path) == before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder), {}), 1)
        << "a half-written file was left beside";
    EXPECT_EQ(write(item, L"Title", L"new"), S_OK);
}

TEST_F(TagsTest, WhatOthersPutIntoTheFileIsSeenAndKept) {
    const auto path = sample(L"one.wma");
    const auto item = start().item(0);
    EXPECT_EQ(read(item, L"WM/TrackNumber"), L"1");

    std::string error;
    auto header = headerOf(path);
    ASSERT_TRUE(header);
    std::erase_if(header->attributes(), [](const auto& a) { return a.name == u"WM/TrackNumber"; });
    asf::Attribute number;
    number.name = u"WM/TrackNumber";
    number.type = asf::AttributeType::dword;
    number.value = {0x2C, 0x01, 0, 0};
    header->attributes().push_back(number);
    asf::Attribute picture;
    picture.name = u"WM/Picture";
    picture.type = asf::AttributeType::bytes;
    picture.value.assign(100'000, 0x5A);
    header->attributes().push_back(picture);
    ASSERT_TRUE(asf::replaceHeader(path, *header, error)) << error;

    EXPECT_EQ(read(item, L"WM/TrackNumber"), L"300");
    EXPECT_EQ(write(item, L"Title", L"after"), S_OK);
    const auto after = headerOf(path);
    const asf::Attribute* kept = after ? after->find(u"WM/Picture") : nullptr;
    ASSERT_NE(kept, nullptr);
    EXPECT_TRUE(kept->value == picture.value);
}

TEST_F(TagsTest, PathsOfAnyLengthAndFilesThatAreNone) {
    std::wstring folder = m_folder.wstring();
    for (int i = 0; i < 3; ++i) {
        folder += L"\\" + std::wstring(100, L'a' + static_cast<wchar_t>(i));
        ASSERT_TRUE(CreateDirectoryW(extendedPath(folder).c_str(), nullptr));
    }
    const auto source = sample(L"zz.wma");
    const std::wstring deep = folder + L"\\deep.wma";
    ASSERT_TRUE(CopyFileW(source.c_str(), extendedPath(deep).c_str(), TRUE));
    std::ofstream(m_folder / "not music.wma") << "text";
    std::ofstream(m_folder / "empty.wma");
    std::ofstream(m_folder / "cover.jpg") << "no track";

    Player& player = start();
    ASSERT_EQ(player.itemCount(), 4U);
    EXPECT_EQ(player.itemPath(0), deep);
    EXPECT_EQ(read(player.item(0), L"Title"), L"scarborough FAIR");
    EXPECT_EQ(write(player.item(0), L"Title", L"deep"), S_OK);
    EXPECT_EQ(read(player.item(0), L"Title"), L"deep");
    for (size_t i : {1U, 2U}) {
        EXPECT_EQ(read(player.item(i), L"Title"), L"");
        EXPECT_TRUE(FAILED(write(player.item(i), L"Title", L"x")));
    }
    EXPECT_EQ(bytesOf(m_folder / "not music.wma"), "text");
    std::filesystem::remove(source);
    EXPECT_EQ(read(player.item(3), L"Title"), L"");
    EXPECT_TRUE(FAILED(write(player.item(3), L"Title", L"x")));

    // The standard library stops at 260 characters, so the fixture cannot clear this up.
    DeleteFileW(extendedPath(deep).c_str());
    for (int i = 0; i < 3; ++i) {
        RemoveDirectoryW(extendedPath(folder).c_str());
        folder.erase(folder.rfind(L'\\'));
    }
}

}  // namespace
}  // namespace orvane::standin
