#include "util/files.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "tests/util/captured_log.h"
#include "tests/util/temp_folder.h"
#include "util/directories.h"
#include "util/file_handles.h"
#include "util/log.h"
#include "util/long_names.h"
#include "util/text.h"

namespace orvane {
namespace {

using test::LogMessage;
using test::takeLog;
using test::TempFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::string longName(const char* path) {
    const OwnedWide name = utl_get_unicode_filename(path, 0);
    return name ? utl_wide_to_utf8_nolog(name.get()).get() : "(none)";
}

bool exists(const std::string& path) {
    bool there = false;
    EXPECT_TRUE(utl_exists(path.c_str(), there, 1, nullptr)) << path;
    EXPECT_THAT(takeLog(), IsEmpty()) << path;
    return there;
}

TEST(LongNames, EveryPathGetsItsExtendedLengthName) {
    EXPECT_EQ(longName(R"(C:\a\b)"), R"(\\?\C:\a\b)");
    EXPECT_EQ(longName(R"(C:/a//b/./c/..)"), R"(\\?\C:\a\b)");
    EXPECT_EQ(longName(R"(\\srv\share\x)"), R"(\\?\UNC\srv\share\x)");
    EXPECT_EQ(longName(R"(//srv/share//x)"), R"(\\?\UNC\srv\share\x)");
    // Carrying the prefix means: take it as it is.
    EXPECT_EQ(longName(R"(\\?\C:\a//b\.)"), R"(\\?\C:\a//b\.)");

    TempFolder folder;
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_NE(SetCurrentDirectoryW(test::wide(folder.path()).c_str()), 0);
    EXPECT_EQ(longName("x/y"), R"(\\?\)" + (folder / R"(x\y)"));
    EXPECT_EQ(longName(R"(\x)"), R"(\\?\C:\x)");
    SetCurrentDirectoryW(before);

    EXPECT_EQ(utl_get_unicode_filename("", 1), nullptr);
    EXPECT_THAT(takeLog(),
                ElementsAre(LogMessage{
                    LOG_ERR, "abspath_w: can't determine absolute path of empty string"}));
}

// The folders that users install to: every spelling of such a path finds the file.
TEST(Files, AreFoundUnderAnySpellingOfTheirPath) {
    TempFolder folder;
    std::string deep = folder / "é 日本 😀";
    while (deep.size() < 400) deep += "\\" + std::string(60, 'd');
    ASSERT_TRUE(utl_mkdir_multi_intl(deep.c_str(), 1, false, LOG_ERR));
    takeLog();
    const std::string file = deep + "\\OrVaneApp.exe";
    test::writeFile(file, "MZ");

    std::string forward = file;
    std::replace(forward.begin(), forward.end(), '\\', '/');
    EXPECT_TRUE(exists(file));
    EXPECT_TRUE(exists(forward));
    EXPECT_TRUE(exists(deep + "\\\\OrVaneApp.exe"));
    EXPECT_TRUE(exists(deep + "//.//OrVaneApp.exe"));
    EXPECT_TRUE(exists(deep + "\\x\\..\\OrVaneApp.exe"));
    EXPECT_TRUE(exists(R"(\\?\)" + file));
    EXPECT_TRUE(exists(deep));
    EXPECT_TRUE(exists(deep + "\\"));
    EXPECT_FALSE(exists(deep + "\\missing.exe"));
    EXPECT_FALSE(exists(folder / "missing\\x.exe"));

    bool there = false;
    EXPECT_TRUE(utl_file_exists(file.c_str(), there, nullptr));
    EXPECT_TRUE(there);
    // Longer than the system takes: no answer, but no harm.
    EXPECT_FALSE(utl_file_exists((folder / std::string(40000, 'x')).c_str(), there, nullptr) &&
                 there);
    EXPECT_FALSE(there);
    takeLog();
}

TEST(Files, AFailedOpenIsReportedWithItsReasonAndAMissingFileIsNot) {
    TempFolder folder;
    const std::string path = folder / "file.txt";
    test::writeFile(path, "content");
    UniqueFile file;
    EXPECT_TRUE(utl_open_for_append((folder / "none").c_str(), file, 1));
    EXPECT_FALSE(file);
    EXPECT_THAT(takeLog(), IsEmpty());

    // Somebody who shares nothing: neither there nor missing.
    UniqueFile owner;
    ASSERT_TRUE(utl_get_win_file_handle(path.c_str(), owner, GENERIC_READ, 0, OPEN_EXISTING, 0, 1,
                                        nullptr, nullptr));
    bool denied = true;
    bool there = true;
    EXPECT_FALSE(utl_exists(path.c_str(), there, 1, &denied));
    EXPECT_FALSE(there);
    EXPECT_FALSE(denied);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_THAT(takeLog(),
                ElementsAre(LogMessage{LOG_ERR, "utl_get_win_file_handle_abs: CreateFileW(\\\\?\\" +
                                                    path + ",0x80000000) failed (32) -- <32>"}));
    EXPECT_FALSE(utl_exists(path.c_str(), there, 0, nullptr));
    EXPECT_THAT(takeLog(), IsEmpty());
    close_handle(owner);
    EXPECT_FALSE(owner);

    // Lacking rights (a folder cannot be opened as a file) is for the caller to judge.
    EXPECT_FALSE(utl_get_win_file_handle(folder.path().c_str(), file, GENERIC_READ, 0,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 1, nullptr,
                                         &denied));
    EXPECT_TRUE(denied);
    EXPECT_THAT(takeLog(), Contains(testing::Field(&LogMessage::priority, LOG_INFO)));

    EXPECT_TRUE(utl_get_win_file_handle(path.c_str(), file, GENERIC_WRITE, 0, CREATE_ALWAYS, 0, 1,
                                        nullptr, nullptr));
    EXPECT_THAT(takeLog(), ElementsAre(LogMessage{LOG_INFO,
                                                  "utl_get_win_file_handle_abs: overwriting "
                                                  "existing file \\\\?\\" +
                                                      path}));
}

TEST(Files, AppendedDataGoesToTheEndWhoeverElseWrites) {
    TempFolder folder;
    const std::string path = folder / "shared.txt";
    test::writeFile(path, "0");
    UniqueFile first;
    UniqueFile second;
    ASSERT_TRUE(utl_open_for_append(path.c_str(), first, 1));
    ASSERT_TRUE(utl_open_for_append(path.c_str(), second, 1));
    DWORD written = 0;
    for (const auto& [file, text] : {std::pair{&first, "a"}, {&second, "b"}, {&first, "c"}}) {
        ASSERT_NE(WriteFile(file->get(), text, 1, &written, nullptr), 0);
    }
    EXPECT_EQ(test::readFile(path), "0abc");
}

TEST(Files, StatAndAccessTellWhatIsThere) {
    TempFolder folder;
    const std::string path = folder / "five.txt";
    test::writeFile(path, "12345");
    bool there = false;
    UtlStat record;
    ASSERT_TRUE(utl_stat(path.c_str(), 1, there, record, nullptr));
    EXPECT_TRUE(there);
    EXPECT_EQ(record.isDirectory, 0U);
    EXPECT_EQ(record.size, 5U);
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t nowTicks = std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
    EXPECT_LT(nowTicks - record.lastWrite, 600'000'000ULL) << "written within this minute";
    ASSERT_TRUE(utl_stat(folder.path().c_str(), 1, there, record, nullptr));
    EXPECT_EQ(record.isDirectory, 1U);
    EXPECT_TRUE(utl_stat("", 1, there, record, nullptr));
    EXPECT_FALSE(there);
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_TRUE(utl_stat((folder / "none").c_str(), 1, there, record, nullptr));
    EXPECT_FALSE(there);
    EXPECT_THAT(takeLog(), ElementsAre(testing::Field(&LogMessage::priority, LOG_DEBUG)));

    EXPECT_TRUE(utl_access(path.c_str(), 1));
    EXPECT_TRUE(utl_access("C:", 1));
    EXPECT_FALSE(utl_access("Q:", 1));
    EXPECT_FALSE(utl_access((folder / "none").c_str(), 1));
    EXPECT_THAT(
        takeLog(),
        ElementsAre(testing::Field(&LogMessage::text,
                                   testing::StartsWith("utl_access: GetFileAttributes(Q:)")),
                    LogMessage{LOG_INFO, "utl_access: GetFileAttributesW(\\\\?\\" +
                                             (folder / "none") + ") failed (2) -- <2>"}));

    EXPECT_TRUE(utl_file_delete(path.c_str(), 1, nullptr));
    EXPECT_FALSE(test::isFile(path));
    bool denied = true;
    EXPECT_FALSE(utl_file_delete(path.c_str(), 1, &denied));
    EXPECT_FALSE(denied);
    EXPECT_EQ(takeLog().back().priority, LOG_ERR);
}

TEST(Directories, EveryMissingLevelIsMadeOnce) {
    TempFolder folder;
    ASSERT_TRUE(utl_mkdir((folder / "a").c_str(), 1));
    const std::string path = folder / R"(a\\b\é日本\c\)";
    EXPECT_TRUE(utl_mkdir_multi_intl(path.c_str(), 0, false, LOG_ERR));
    EXPECT_TRUE(test::isFolder(folder / R"(a\b\é日本\c)"));
    EXPECT_TRUE(utl_mkdir_multi_intl(path.c_str(), 1, false, LOG_ERR));
    for (const LogMessage& message : takeLog()) EXPECT_GE(message.priority, LOG_INFO);

    errno = 0;
    EXPECT_FALSE(utl_mkdir((folder / "a").c_str(), 0));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_FALSE(utl_mkdir((folder / R"(no\parent)").c_str(), 0));
    EXPECT_EQ(errno, ENOENT);
}

TEST(Directories, AFileInTheWayFailsOrIsReplaced) {
    TempFolder folder;
    const std::string level = folder / "level";
    test::writeFile(level, "in the way");
    const std::string path = level + "\\below";
    EXPECT_FALSE(utl_mkdir_multi_intl(path.c_str(), 1, false, LOG_WARNING));
    EXPECT_THAT(takeLog(), Contains(LogMessage{LOG_WARNING, "utl_mkdir_handle_existing: " + level +
                                                                " exists but is not a directory"}));
    EXPECT_EQ(test::readFile(level), "in the way");
    EXPECT_TRUE(utl_mkdir_multi_intl(path.c_str(), 0, true, LOG_WARNING));
    EXPECT_TRUE(test::isFolder(path));
}

TEST(Directories, PathsWithoutALevelOrWithTooManyBackslashesAreRefused) {
    for (const char* path : {"", R"(\)", R"(\\)", R"(\\host)"}) {
        EXPECT_FALSE(utl_mkdir_multi_intl(path, 0, true, LOG_ERR)) << path;
    }
    EXPECT_FALSE(utl_mkdir_multi_intl(R"(\\\x)", 1, false, LOG_ERR));
    EXPECT_THAT(takeLog(),
                Contains(LogMessage{
                    LOG_ERR, R"(utl_mkdir_multi_intl: too many (back)slashes (3) starting \\\x)"}));
    EXPECT_FALSE(utl_mkdir_multi_intl(R"(\\srv\share\dir)", 1, false, LOG_ERR));
    EXPECT_THAT(takeLog(),
                Contains(LogMessage{LOG_DEBUG,
                                    "utl_mkdir_multi_intl: no processing for machine name srv"}));
}

// Between one maker's test and its creation another one creates: with this many levels that happens
// in nearly every round.
TEST(Directories, ManyMakersOfTheSamePathAllSucceed) {
    constexpr int kMakers = 4;
    TempFolder folder;
    for (int round = 0; round < 20; ++round) {
        std::string path = folder / ("r" + std::to_string(round));
        for (int level = 0; level < 20; ++level) path += "\\l";
        std::latch start(kMakers);
        std::atomic<int> made{0};
        std::vector<std::thread> makers;
        makers.reserve(kMakers);
        for (int i = 0; i < kMakers; ++i) {
            makers.emplace_back([&] {
                start.arrive_and_wait();
                if (utl_mkdir_multi_intl(path.c_str(), 0, true, LOG_ERR)) ++made;
            });
        }
        for (std::thread& maker : makers) maker.join();
        EXPECT_EQ(made, kMakers);
        EXPECT_TRUE(test::isFolder(path));
    }
}

}  // namespace
}  // namespace orvane
