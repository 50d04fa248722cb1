#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

#include "platform/handles.h"
#endif

#include "tests/standins/asf/asf_test_files.h"

namespace orvane::asf::test {
namespace {

Header changedHeaderOf(const std::filesystem::path& path) {
    std::string error;
    auto header = readHeader(path, error);
    EXPECT_TRUE(header) << path << ": " << error;
    if (!header) return {};
    header->setText(u"Title", u"A new title é 日本");
    header->attributes().push_back(bytesAttribute(u"Large", Bytes(70'000, 7)));
    return *header;
}

void expectChanged(const std::filesystem::path& path, const Bytes& before) {
    const Bytes after = readAll(path);
    const Header header = parsed(after);
    EXPECT_EQ(textOf(header, u"Title"), u"A new title é 日本");
    EXPECT_EQ(header.find(u"Large")->value.size(), 70'000U);
    EXPECT_EQ(audioOf(after), audioOf(before));
}

TEST(AsfReplace, PathsMayBeLongAndInAnyLanguage) {
    const TempFolder folder;
    std::filesystem::path deep = folder.path();
    for (int i = 0; i < 6; ++i) deep /= std::u16string(48, u'é') + u" 日本";
#ifdef _WIN32
    deep = extendedLength(deep);
#endif
    std::filesystem::create_directories(deep);
    // The name itself is as long as a name may be.
    const auto path = deep / (std::string(240, 'n') + ".wma");
    ASSERT_GT(path.native().size(), 500U);
    writeAll(path, sample());
#ifdef _WIN32
    // As programs pass it: not in the form without limit.
    const std::filesystem::path given = path.wstring().substr(4);
#else
    const std::filesystem::path given = path;
#endif
    std::string error;
    ASSERT_TRUE(replaceHeader(given, changedHeaderOf(given), error)) << error;
    expectChanged(path, sample());
}

TEST(AsfReplace, FailureHalfWayLeavesTheOldFileAlone) {
    const TempFolder folder;
    const auto path = folder.path() / "track.wma";
    const Bytes before = sample();
    writeAll(path, before);
    const Header header = changedHeaderOf(path);
    const std::size_t newSize = serialised(header).size() + audioOf(before).size();
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}, std::size_t{500},
                                   newSize - audioOf(before).size(), newSize - 1}) {
        std::string error;
        EXPECT_FALSE(replaceHeader(path, header, error, {room})) << room;
        EXPECT_EQ(error, "The disk is full.");
        EXPECT_EQ(readAll(path), before) << room;
        EXPECT_EQ(folder.files(), 1U) << room;
    }
    std::string error;
    EXPECT_TRUE(replaceHeader(path, header, error, {newSize})) << error;
    EXPECT_EQ(folder.files(), 1U);
    expectChanged(path, before);
}

TEST(AsfReplace, WhatIsNoAsfFileIsRefusedAndKept) {
    const TempFolder folder;
    const auto path = folder.path() / "odd.wma";
    const Header header = parsed(sample());
    Bytes liar = sample();
    overwriteNumber(liar, 16, liar.size() + 1, 8);
    Bytes giant = sample();
    overwriteNumber(giant, 16, std::uint64_t{1} << 62U, 8);
    const auto expectRefused = [&](const std::filesystem::path& file) {
        std::string reading, writing;
        EXPECT_FALSE(readHeader(file, reading)) << file;
        EXPECT_FALSE(replaceHeader(file, header, writing)) << file;
        EXPECT_TRUE(!reading.empty() && !writing.empty()) << file;
    };
    for (const Bytes& content : {Bytes{}, Bytes{0x30}, Bytes(5'000, 0), liar, giant}) {
        writeAll(path, content);
        expectRefused(path);
        EXPECT_EQ(readAll(path), content);
        EXPECT_EQ(folder.files(), 1U);
    }
    for (const auto& missing : {folder.path() / "none.wma", folder.path(), {}})
        expectRefused(missing);
}

#ifdef _WIN32
TEST(AsfReplace, AFileThatOthersHaveOpenIsKept) {
    const TempFolder folder;
    const auto path = folder.path() / "track.wma";
    const Bytes before = sample();
    writeAll(path, before);
    const Header header = changedHeaderOf(path);
    const auto expectKept = [&](const char* why) {
        std::string error;
        EXPECT_FALSE(replaceHeader(path, header, error));
        EXPECT_NE(error.find(why), std::string::npos) << error;
        EXPECT_TRUE(readHeader(path, error)) << error;
        EXPECT_EQ(readAll(path), before);
        EXPECT_EQ(folder.files(), 1U);
    };
    for (const DWORD share : {DWORD{FILE_SHARE_READ}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        const UniqueFile other(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        expectKept("has the file open");
    }
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    expectKept("may not be written");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    std::string error;
    EXPECT_TRUE(replaceHeader(path, header, error)) << error;
    expectChanged(path, before);
}
#endif

}  // namespace
}  // namespace orvane::asf::test
