#include "util/files/files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <thread>

#include "tests/support/captured_log.h"
#include "tests/support/temp_folder.h"
#include "util/files/directories.h"
#include "util/files/file_handles.h"
#include "util/files/long_names.h"
#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {
namespace {

using test::isFolder;
using test::TempFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

test::CapturedLog s_log;

std::vector<std::string> takeLog() { return s_log.lines(); }

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

bool makeAll(const std::string& path, bool replace = false, int log = 1) {
    return utl_mkdir_multi_intl(path.c_str(), log, replace, LOG_WARNING);
}

TEST(LongNames, EveryPathGetsItsExtendedLengthName) {
    EXPECT_EQ(longName(R"(C:/a//b/./c/..)"), R"(\\?\C:\a\b)");
    EXPECT_EQ(longName(R"(\\srv\share\x)"), R"(\\?\UNC\srv\share\x)");
    EXPECT_EQ(longName(R"(//srv/share//x)"), R"(\\?\UNC\srv\share\x)");
    // Carrying the prefix means: take it as it is.
    EXPECT_EQ(longName(R"(\\?\C:\a//b\.)"), R"(\\?\C:\a//b\.)");

    const TempFolder folder;
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_NE(SetCurrentDirectoryW(folder.path().c_str()), 0);
    EXPECT_EQ(longName("x/y"), R"(\\?\)" + folder / R"(x\y)");
    EXPECT_EQ(longName("C:x"), R"(\\?\)" + folder / "x");
    EXPECT_EQ(longName(R"(\x)"), R"(\\?\C:\x)");
    SetCurrentDirectoryW(before);

    EXPECT_EQ(utl_get_unicode_filename("", 1), nullptr);
    EXPECT_THAT(takeLog(),
                ElementsAre("<3> abspath_w: can't determine absolute path of empty string"));
}

// The folders that users install to: every spelling of such a path finds the file.
TEST(Files, AreFoundUnderAnySpellingOfTheirPath) {
    const TempFolder folder;
    std::string deep = folder / "é 日本 😀";
    while (deep.size() < 400) deep += "\\" + std::string(60, 'd');
    ASSERT_TRUE(makeAll(deep));
    takeLog();
    const std::string file = deep + "\\OrVaneApp.exe";
    test::writeFile(test::wide(file), "MZ");
    std::string forward = file;
    std::replace(forward.begin(), forward.end(), '\\', '/');
    for (const std::string& path :
         {file, forward, deep + "\\\\OrVaneApp.exe", deep + "//.//OrVaneApp.exe",
          deep + "\\x\\..\\OrVaneApp.exe", R"(\\?\)" + file, deep, deep + "\\"})
        EXPECT_TRUE(exists(path)) << path;
    EXPECT_FALSE(exists(deep + "\\missing.exe"));
    EXPECT_FALSE(exists(folder / "missing\\x.exe"));

    // Longer than the system takes: no answer, but no harm.
    bool there = true;
    static_cast<void>(utl_file_exists((folder / std::string(40000, 'x')).c_str(), there, nullptr));
    EXPECT_FALSE(there);
    takeLog();
}

TEST(Files, AFailedOpenIsReportedWithItsReasonAndAMissingFileIsNot) {
    const TempFolder folder;
    const std::string path = folder / "file.txt";
    test::writeFile(folder.path(L"file.txt"), "content");
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
    EXPECT_THAT(takeLog(), ElementsAre("<3> utl_get_win_file_handle_abs: CreateFileW(\\\\?\\" +
                                       path + ",0x80000000) failed (32) -- <32>"));
    EXPECT_FALSE(utl_exists(path.c_str(), there, 0, nullptr));
    EXPECT_THAT(takeLog(), IsEmpty());
    close_handle(owner);

    // Lacking rights (a folder cannot be opened as a file) is for the caller to judge.
    EXPECT_FALSE(utl_get_win_file_handle(test::utf8(folder.path()).c_str(), file, GENERIC_READ, 0,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 1, nullptr,
                                         &denied));
    EXPECT_TRUE(denied);
    EXPECT_THAT(takeLog(), ElementsAre(StartsWith("<6> utl_get_win_file_handle_abs: CreateFileW")));

    EXPECT_TRUE(utl_get_win_file_handle(path.c_str(), file, GENERIC_WRITE, 0, CREATE_ALWAYS, 0, 1,
                                        nullptr, nullptr));
    EXPECT_THAT(
        takeLog(),
        ElementsAre("<6> utl_get_win_file_handle_abs: overwriting existing file \\\\?\\" + path));
}

TEST(Files, StatAccessAndDeletionTellWhatIsThere) {
    const TempFolder folder;
    const std::string path = folder / "five.txt";
    test::writeFile(folder.path(L"five.txt"), "12345");
    bool there = false;
    UtlStat record;
    ASSERT_TRUE(utl_stat(path.c_str(), 1, there, record, nullptr));
    EXPECT_TRUE(there);
    EXPECT_EQ(record.isDirectory, 0U);
    EXPECT_EQ(record.size, 5U);
    ASSERT_TRUE(utl_stat(test::utf8(folder.path()).c_str(), 1, there, record, nullptr));
    EXPECT_EQ(record.isDirectory, 1U);
    EXPECT_TRUE(utl_stat("", 1, there, record, nullptr));
    EXPECT_FALSE(there);
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_TRUE(utl_stat((folder / "none").c_str(), 1, there, record, nullptr));
    EXPECT_FALSE(there);
    EXPECT_THAT(takeLog(), ElementsAre(StartsWith("<7> utl_stat_abs: ")));

    EXPECT_TRUE(utl_access(path.c_str(), 1));
    EXPECT_TRUE(utl_access("C:", 1));
    EXPECT_FALSE(utl_access("Q:", 1));
    EXPECT_FALSE(utl_access((folder / "none").c_str(), 1));
    EXPECT_THAT(takeLog(), ElementsAre(StartsWith("<6> utl_access: GetFileAttributes(Q:) failed ("),
                                       "<6> utl_access: GetFileAttributesW(\\\\?\\" +
                                           folder / "none" + ") failed (2) -- <2>"));

    EXPECT_TRUE(utl_file_delete(path.c_str(), 1, nullptr));
    EXPECT_FALSE(exists(path));
    bool denied = true;
    EXPECT_FALSE(utl_file_delete(path.c_str(), 1, &denied));
    EXPECT_FALSE(denied);
    EXPECT_THAT(takeLog(), ElementsAre(StartsWith("<3> utl_file_delete_intl: DeleteFileW(")));
}

TEST(Directories, EveryMissingLevelIsMadeOnce) {
    const TempFolder folder;
    ASSERT_TRUE(utl_mkdir((folder / "a").c_str(), 1));
    const std::string path = folder / R"(a\\b\é日本\c\)";
    EXPECT_TRUE(makeAll(path, false, 0));
    EXPECT_TRUE(isFolder(test::wide(folder / R"(a\b\é日本\c)")));
    EXPECT_TRUE(makeAll(path));
    takeLog();
    errno = 0;
    EXPECT_FALSE(utl_mkdir((folder / "a").c_str(), 0));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_FALSE(utl_mkdir((folder / R"(no\parent)").c_str(), 0));
    EXPECT_EQ(errno, ENOENT);
}

TEST(Directories, AFileInTheWayFailsOrIsReplaced) {
    const TempFolder folder;
    test::writeFile(folder.path(L"level"), "in the way");
    EXPECT_FALSE(makeAll(folder / "level\\below"));
    EXPECT_THAT(takeLog(), Contains("<4> utl_mkdir_handle_existing: " + folder / "level" +
                                    " exists but is not a directory"));
    EXPECT_EQ(test::readText(folder.path(L"level")), "in the way");
    EXPECT_TRUE(makeAll(folder / "level\\below", true, 0));
    EXPECT_TRUE(isFolder(folder.path(L"level\\below")));
}

TEST(Directories, PathsWithoutALevelOrWithTooManyBackslashesAreRefused) {
    for (const char* path : {"", R"(\)", R"(\\)", R"(\\host)"}) EXPECT_FALSE(makeAll(path)) << path;
    EXPECT_FALSE(makeAll(R"(\\\x)"));
    EXPECT_THAT(takeLog(),
                Contains(R"(<4> utl_mkdir_multi_intl: too many (back)slashes (3) starting \\\x)"));
    EXPECT_FALSE(makeAll(R"(\\srv\share\dir)"));
    EXPECT_THAT(takeLog(),
                Contains("<7> utl_mkdir_multi_intl: no processing for machine name srv"));
}

// Between one maker's test and its creation another one creates: with this many levels that happens
// in nearly every round.
TEST(Directories, ManyMakersOfTheSamePathAllSucceed) {
    const TempFolder folder;
    for (int round = 0; round < 20; ++round) {
        std::string path = folder / ("r" + std::to_string(round));
        for (int level = 0; level < 20; ++level) path += "\\l";
        // Not std::latch: this compiler's sometimes misses its own wake-up.
        std::atomic<int> missing{4};
        std::atomic<int> made{0};
        std::vector<std::jthread> makers;
        for (int i = 0; i < 4; ++i)
            makers.emplace_back([&] {
                for (--missing; missing > 0;) std::this_thread::yield();
                made += makeAll(path, true, 0) ? 1 : 0;
            });
        makers.clear();
        EXPECT_EQ(made, 4);
        EXPECT_TRUE(isFolder(test::wide(path)));
    }
}

}  // namespace
}  // namespace orvane
