#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

#include "platform/handles.h"
#endif

#include <chrono>

#include "tests/asf/asf_test_files.h"

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
    // The header is what it would be if it said the size that the file has.
    EXPECT_EQ(
        serialised(header, audioOf(before).size()),
        Bytes(after.begin(), after.begin() + std::ssize(after) - std::ssize(audioOf(before))));
}

TEST(AsfReplace, OnlyTheHeaderChanges) {
    const TempFolder folder;
    for (const auto& from : samples()) {
        const auto path = folder.path() / from.filename();
        const Bytes before = readAll(from);
        writeAll(path, before);
        std::string error;
        ASSERT_TRUE(replaceHeader(path, changedHeaderOf(path), error)) << path << ": " << error;
        expectChanged(path, before);
    }
    EXPECT_EQ(folder.files(), samples().size());
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
    // As programs pass it: not in the form without limit, and with "/".
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
    // A header that cannot be written is noticed before anything is touched.
    Header impossible = header;
    impossible.setText(std::u16string(40'000, u'n'), u"x");
    std::string error;
    EXPECT_FALSE(replaceHeader(path, impossible, error));
    EXPECT_EQ(readAll(path), before);
    EXPECT_EQ(folder.files(), 1U);
    EXPECT_TRUE(replaceHeader(path, header, error, {newSize})) << error;
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
    for (const Bytes& content : {Bytes{}, Bytes{0x30}, Bytes(5'000, 0), liar, giant}) {
        writeAll(path, content);
        std::string error;
        EXPECT_FALSE(readHeader(path, error));
        EXPECT_NE(error, "");
        error.clear();
        EXPECT_FALSE(replaceHeader(path, header, error));
        EXPECT_NE(error, "");
        EXPECT_EQ(readAll(path), content);
        EXPECT_EQ(folder.files(), 1U);
    }
    for (const auto& missing :
         {folder.path() / "none.wma", folder.path(), std::filesystem::path()}) {
        std::string error;
        EXPECT_FALSE(readHeader(missing, error)) << missing;
        EXPECT_NE(error, "") << missing;
        error.clear();
        EXPECT_FALSE(replaceHeader(missing, header, error)) << missing;
        EXPECT_NE(error, "") << missing;
    }
}

#ifndef _WIN32
TEST(AsfReplace, ReadingTheHeaderLeavesTheAudioUnread) {
    const TempFolder folder;
    const auto path = folder.path() / "long.wma";
    writeAll(path, sample());
    std::filesystem::resize_file(path, std::uintmax_t{20} << 30U);  // a hole, where that is cheap
    const auto start = std::chrono::steady_clock::now();
    std::string error;
    EXPECT_TRUE(readHeader(path, error)) << error;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}
#else
TEST(AsfReplace, AFileThatOthersHaveOpenIsKept) {
    const TempFolder folder;
    const auto path = folder.path() / "track.wma";
    const Bytes before = sample();
    writeAll(path, before);
    const Header header = changedHeaderOf(path);
    for (const DWORD share : {DWORD{FILE_SHARE_READ}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        const UniqueFile other(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(other);
        std::string error;
        EXPECT_FALSE(replaceHeader(path, header, error)) << share;
        EXPECT_NE(error.find("has the file open"), std::string::npos) << error;
        EXPECT_EQ(readAll(path), before);
        EXPECT_EQ(folder.files(), 1U);
        // Reading goes on meanwhile.
        EXPECT_TRUE(readHeader(path, error)) << error;
    }
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    std::string error;
    EXPECT_FALSE(replaceHeader(path, header, error));
    EXPECT_NE(error.find("may not be written"), std::string::npos) << error;
    EXPECT_EQ(readAll(path), before);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(replaceHeader(path, header, error)) << error;
    expectChanged(path, before);
}
#endif

}  // namespace
}  // namespace orvane::asf::test
