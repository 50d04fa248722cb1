#include "util/files/files.h"

#include <gmock/gmock.h>
#include <winioctl.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <thread>

#include "harness/files.h"
#include "tests/support/captured_log.h"
#include "util/files/directories.h"
#include "util/files/file_handles.h"
#include "util/files/long_names.h"
#include "util/text/text.h"

namespace orvane {
namespace {

using test::isFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// In a folder of its own, with what the calls log.
class Files : public testing::Test {
protected:
    bool exists(const std::string& path) {
        bool there = false;
        EXPECT_TRUE(utl_exists(path.c_str(), there, 1, nullptr)) << path;
        EXPECT_THAT(m_log.lines(), IsEmpty()) << path;
        return there;
    }
    static bool open(const std::string& path, UniqueFile& file, DWORD access, DWORD disposition,
                     bool* denied = nullptr) {
        return utl_get_win_file_handle(path.c_str(), file, access, 0, disposition, 0, 1, nullptr,
                                       denied);
    }
    static bool makeAll(const std::string& path, bool replace = false) {
        return utl_mkdir_multi_intl(path.c_str(), 0, replace, LOG_WARNING);
    }

    test::TempFolder m_folder;
    test::CapturedLog m_log;
};

std::string longName(const char* path) {
    const OwnedWide name = utl_get_unicode_filename(path, 0);
    return name ? utl_wide_to_utf8_nolog(name.get()).get() : "(none)";
}

TEST_F(Files, EveryPathHasItsExtendedLengthName) {
    EXPECT_EQ(longName(R"(C:/a//b/./c/..)"), R"(\\?\C:\a\b)");
    EXPECT_EQ(longName(R"(\\srv\share\x)"), R"(\\?\UNC\srv\share\x)");
    EXPECT_EQ(longName(R"(//srv/share//x)"), R"(\\?\UNC\srv\share\x)");
    // Carrying the prefix means: take it as it is.
    EXPECT_EQ(longName(R"(\\?\C:\a//b\.)"), R"(\\?\C:\a//b\.)");
    EXPECT_EQ(longName(""), "(none)");

    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_NE(SetCurrentDirectoryW(m_folder.path().c_str()), 0);
    EXPECT_EQ(longName("x/y"), R"(\\?\)" + m_folder / R"(x\y)");
    EXPECT_EQ(longName("C:x"), R"(\\?\)" + m_folder / "x");
    EXPECT_EQ(longName(R"(\x)"), R"(\\?\C:\x)");
    SetCurrentDirectoryW(before);
}

// The folders that users install to: every spelling of such a path finds the file.
TEST_F(Files, AreFoundByAnySpellingOfTheirPath) {
    std::string deep = m_folder / "é 日本 😀";
    while (deep.size() < 400) deep += "\\" + std::string(60, 'd');
    ASSERT_TRUE(makeAll(deep));
    const std::string file = deep + "\\OrVaneApp.exe";
    test::writeFile(test::wide(file), "MZ");
    std::string forward = file;
    std::replace(forward.begin(), forward.end(), '\\', '/');
    for (const std::string& path :
         {file, forward, deep + "\\\\OrVaneApp.exe", deep + "//.//OrVaneApp.exe",
          deep + "\\x\\..\\OrVaneApp.exe", R"(\\?\)" + file, deep, deep + "\\"})
        EXPECT_TRUE(exists(path)) << path;
    EXPECT_FALSE(exists(deep + "\\missing.exe"));
    EXPECT_FALSE(exists(m_folder / "missing\\x.exe"));

    // Longer than the system takes: no answer, but no harm.
    bool there = true;
    static_cast<void>(
        utl_file_exists((m_folder / std::string(40000, 'x')).c_str(), there, nullptr));
    EXPECT_FALSE(there);
}

TEST_F(Files, AFailedOpenIsReportedWithItsReasonAndAMissingFileIsNot) {
    const std::string path = m_folder / "file.txt";
    test::writeFile(m_folder.path(L"file.txt"), "content");
    UniqueFile file;
    EXPECT_TRUE(utl_open_for_append((m_folder / "none").c_str(), file, 1));
    EXPECT_FALSE(file);
    EXPECT_THAT(m_log.lines(), IsEmpty());

    // Somebody who shares nothing: neither there nor missing.
    UniqueFile owner;
    ASSERT_TRUE(open(path, owner, GENERIC_READ, OPEN_EXISTING));
    bool denied = true;
    bool there = true;
    EXPECT_FALSE(utl_exists(path.c_str(), there, 1, &denied));
    EXPECT_FALSE(there);
    EXPECT_FALSE(denied);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_THAT(m_log.lines(), ElementsAre("<3> utl_get_win_file_handle_abs: CreateFileW(\\\\?\\" +
                                           path + ",0x80000000) failed (32) -- <32>"));
    EXPECT_FALSE(utl_exists(path.c_str(), there, 0, nullptr));
    EXPECT_THAT(m_log.lines(), IsEmpty());
    close_handle(owner);

    // Lacking rights (a folder cannot be opened as a file) is for the caller to judge.
    EXPECT_FALSE(open(m_folder / "", file, GENERIC_READ, OPEN_EXISTING, &denied));
    EXPECT_TRUE(denied);
    EXPECT_THAT(m_log.lines(), ElementsAre(StartsWith("<6> ")));
    EXPECT_TRUE(open(path, file, GENERIC_WRITE, CREATE_ALWAYS));
    EXPECT_THAT(m_log.lines(), ElementsAre(StartsWith("<6> ")));
}

TEST_F(Files, StatAccessAndDeleteHandleFilesFoldersAndMissingPaths) {
    constexpr std::uint64_t kLarge = (std::uint64_t{1} << 32) + 5;
    const std::string path = m_folder / "large.bin";
    {
        UniqueFile file;
        ASSERT_TRUE(open(path, file, GENERIC_WRITE, CREATE_NEW));
        DWORD unused = 0;
        DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &unused, nullptr);
        LARGE_INTEGER end;
        end.QuadPart = kLarge;
        ASSERT_NE(SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN), 0);
        ASSERT_NE(SetEndOfFile(file.get()), 0);
    }
    bool there = false;
    UtlStat record;
    const auto stat = [&](const std::string& name) {
        return utl_stat(name.c_str(), 1, there, record, nullptr);
    };
    ASSERT_TRUE(stat(path));
    EXPECT_TRUE(there);
    EXPECT_EQ(record.isDirectory, 0U);
    EXPECT_EQ(record.size, kLarge);
    ASSERT_TRUE(stat(test::utf8(m_folder.path())));
    EXPECT_EQ(record.isDirectory, 1U);
    for (const std::string& none : {std::string(), m_folder / "none"}) {
        EXPECT_TRUE(stat(none));
        EXPECT_FALSE(there);
    }

    EXPECT_TRUE(utl_access(path.c_str(), 1));
    EXPECT_TRUE(utl_access("C:", 1));
    m_log.lines();
    EXPECT_FALSE(utl_access("Q:", 1));
    EXPECT_FALSE(utl_access((m_folder / "none").c_str(), 1));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(m_log.lines(), ElementsAre(StartsWith("<6> "), StartsWith("<6> ")));

    EXPECT_TRUE(utl_file_delete(path.c_str(), 1, nullptr));
    EXPECT_FALSE(exists(path));
    bool denied = true;
    EXPECT_FALSE(utl_file_delete(path.c_str(), 1, &denied));
    EXPECT_FALSE(denied);
    EXPECT_THAT(m_log.lines(), ElementsAre(StartsWith("<3> ")));
    // A folder is not for deletion as a file.
    EXPECT_FALSE(utl_file_delete(test::utf8(m_folder.path()).c_str(), 1, &denied));
    EXPECT_TRUE(denied);
    EXPECT_THAT(m_log.lines(), ElementsAre(StartsWith("<6> ")));
}

using Directories = Files;

TEST_F(Directories, EveryMissingLevelIsCreated) {
    ASSERT_TRUE(utl_mkdir((m_folder / "a").c_str(), 1));
    const std::string path = m_folder / R"(a\\b\é日本\c\)";
    EXPECT_TRUE(makeAll(path));
    EXPECT_TRUE(isFolder(m_folder.path(L"a\\b\\é日本\\c")));
    EXPECT_TRUE(makeAll(path));
    errno = 0;
    EXPECT_FALSE(utl_mkdir((m_folder / "a").c_str(), 0));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_FALSE(utl_mkdir((m_folder / R"(no\parent)").c_str(), 0));
    EXPECT_EQ(errno, ENOENT);
    for (const char* nothing : {"", R"(\)", R"(\\)", R"(\\host)", R"(\\\x)", R"(\\srv\share\dir)"})
        EXPECT_FALSE(makeAll(nothing)) << nothing;
}

TEST_F(Directories, AFileOfTheSameNameFailsOrIsReplaced) {
    test::writeFile(m_folder.path(L"level"), "in the way");
    EXPECT_FALSE(makeAll(m_folder / "level\\below"));
    EXPECT_EQ(test::readText(m_folder.path(L"level")), "in the way");
    EXPECT_TRUE(makeAll(m_folder / "level\\below", true));
    EXPECT_TRUE(isFolder(m_folder.path(L"level\\below")));
}

// Between one maker's test and its creation another one creates; round after round, until one has
// said so.
TEST_F(Directories, SeveralThreadsCanCreateTheSamePath) {
    const auto haveMet = [&] { return m_log.take().find("another process") != std::string::npos; };
    for (int round = 0; round < 200 && (round < 5 || !haveMet()); ++round) {
        std::string path = m_folder / ("r" + std::to_string(round));
        for (int level = 0; level < 20; ++level) path += "\\l";
        // Not std::latch: this compiler's sometimes misses its own wake-up.
        std::atomic<int> missing{4};
        std::atomic<int> made{0};
        std::vector<std::jthread> makers;
        makers.reserve(4);
        for (int i = 0; i < 4; ++i)
            makers.emplace_back([&] {
                for (--missing; missing > 0;) std::this_thread::yield();
                made += utl_mkdir_multi_intl(path.c_str(), 1, true, LOG_WARNING) ? 1 : 0;
            });
        makers.clear();
        ASSERT_EQ(made, 4) << m_log.take();
        EXPECT_TRUE(isFolder(test::wide(path)));
    }
}

}  // namespace
}  // namespace orvane
