#include "util/shared_log/shared_log.h"

#include <windows.h>

#include <aclapi.h>
#include <gmock/gmock.h>
#include <process.h>
#include <shlobj.h>

#include <cerrno>
#include <map>
#include <regex>

#include "harness/child.h"
#include "tests/util/shared_log/log_fixture.h"
#include "util/shared_log/log_format.h"
#include "util/shared_log/log_lock.h"

namespace orvane {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Log : public test::LogTest {};

// The other process, which may take its time on a busy machine.
class Writer : public test::Child {
public:
    explicit Writer(const std::wstring& command) : Child(L"util_log_writer.exe " + command) {}
    DWORD wait() { return exitCode(60'000).value_or(99); }
};

// The line without its time, which is checked for form.
std::string afterTime(const std::string& line) {
    static const std::regex form(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d : ([^\r\n]*))");
    std::smatch match;
    return std::regex_match(line, match, form) ? match[1].str() : "(no line: " + line + ")";
}

// In place of the import library's: a system without English texts, where each error has a name of
// its own language.
bool withoutEnglish = false;
DWORD WINAPI formatMessage(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                           DWORD size, va_list* arguments) {
    static const auto system = reinterpret_cast<decltype(&FormatMessageW)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "FormatMessageW")));
    if (!withoutEnglish) return system(flags, source, code, language, buffer, size, arguments);
    if (language != 0 || code != ERROR_ACCESS_DENIED) {
        SetLastError(ERROR_RESOURCE_LANG_NOT_FOUND);
        return 0;
    }
    auto* const text = static_cast<wchar_t*>(LocalAlloc(LPTR, 64));
    wcscpy(text, L"Acc\u00e8s refus\u00e9 \u65e5 (100%).\r\nrest");
    *reinterpret_cast<wchar_t**>(buffer) = text;
    return static_cast<DWORD>(std::wcslen(text));
}

std::string pid() { return std::to_string(_getpid()); }

TEST_F(Log, ALineNamesTimeSeverityWriterAndMessage) {
    openlog("OrVaneWmpPlugin", LOG_PID, 0);
    syslog(LOG_WARNING, "%s: Error launching OrVane", "COrVaneWmpPlugin::FinalConstruct");
    syslog(LOG_ERR + 8, "%s", "");
    openlog("Other é", 0, 0);
    syslog(LOG_DEBUG, "%s %d", "日本", 7);
    closelog();
    syslog(LOG_ERR, "after closelog");
    openlog(nullptr, LOG_PID, 0);
    syslog(LOG_ERR, "no ident");

    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 5U);
    EXPECT_EQ(afterTime(written[0]),
              "<4> OrVaneWmpPlugin : [" + pid() +
                  "] COrVaneWmpPlugin::FinalConstruct: Error launching OrVane");
    EXPECT_EQ(afterTime(written[1]), "<3> OrVaneWmpPlugin : [" + pid() + "] ");
    EXPECT_EQ(afterTime(written[2]), "<7> Other é : 日本 7");
    EXPECT_EQ(afterTime(written[3]), "<3> unknown : after closelog");
    EXPECT_EQ(afterTime(written[4]), "<3> unknown : [" + pid() + "] no ident");
    EXPECT_THAT(content(), EndsWith("\n"));
    EXPECT_THAT(content(), testing::Not(HasSubstr("\r")));
}

TEST_F(Log, AMaskedMessageHasNoSideEffects) {
    EXPECT_EQ(setlogmask(63), 0xFFU);
    EXPECT_EQ(setlogmask(0), 63U);
    closelog();
    SetLastError(77);
    // Not even a format that could not be printed.
    syslog(LOG_INFO, "%s %M", reinterpret_cast<const char*>(std::uintptr_t{1}));
    EXPECT_EQ(GetLastError(), 77U);
    EXPECT_FALSE(test::isFolder(test::wide(m_base)));
    EXPECT_EQ(OpenMutexA(SYNCHRONIZE, FALSE, logMutexName()), nullptr);
    syslog(LOG_NOTICE, "through");
    EXPECT_EQ(lines().size(), 1U);
}

TEST_F(Log, ErrorTextsAreForTheCallersErrorsWhichArePreserved) {
    SetLastError(ERROR_ACCESS_DENIED);
    errno = ENOENT;
    syslog(LOG_ERR, "%s: failed (%d) -- %M / %m", "100%M %m", 5);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(errno, ENOENT);
    syslog(LOG_ERR, "%%M %d%%m", 50);
    // The text of this error holds directives of its own ("%1 is not a valid application").
    SetLastError(ERROR_BAD_EXE_FORMAT);
    syslog(LOG_ERR, "%d -- %M", 193);
    // Without an English text there is no message.
    SetLastError(0x2FFFFFFF);
    syslog(LOG_ERR, "dropped -- %M");
    syslog(LOG_ERR, "asks for none -- %%M");
    EXPECT_EQ(GetLastError(), 0x2FFFFFFFU);

    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 4U);
    EXPECT_EQ(afterTime(written[3]), "<3> unknown : asks for none -- %M");
    EXPECT_THAT(afterTime(written[0]), testing::AllOf(HasSubstr("100%M %m: failed (5) -- Access"),
                                                      EndsWith(" / No such file or directory")));
    EXPECT_EQ(afterTime(written[1]), "<3> unknown : %M 50%m");

    EXPECT_THAT(afterTime(written[2]),
                testing::AllOf(StartsWith("<3> unknown : 193 -- "), HasSubstr("%1")));
}

TEST_F(Log, ErrorTextsAreInTheSystemsLanguageWhereItHasNoEnglish) {
    withoutEnglish = true;
    for (const DWORD code : {ERROR_ACCESS_DENIED, ERROR_FILE_NOT_FOUND}) {
        SetLastError(code);
        syslog(LOG_ERR, "%d -- %M", static_cast<int>(code));
    }
    withoutEnglish = false;
    ASSERT_EQ(lines().size(), 1U);
    EXPECT_EQ(afterTime(lines()[0]), "<3> unknown : 5 -- Accès refusé 日 (100%).");
}

// A text of the system's inside a format: it is printed as it would be read there.
TEST(LogFormat, LonePercentSignsAreDoubledAndPairsKept) {
    EXPECT_STREQ(escapePercents("5% of 50%% %%% %").get(), "5%% of 50%% %%%% %%");
}

TEST_F(Log, TheFolderIsCreatedAndAFileOfItsNameReplaced) {
    test::writeFile(test::wide(m_base), "a file");
    syslog(LOG_ERR, "one");
    EXPECT_EQ(lines().size(), 1U);

    // Moved away between two messages: a new file begins.
    ASSERT_NE(MoveFileW(m_file.c_str(), (m_file.native() + L".old").c_str()), 0);
    syslog(LOG_ERR, "two");
    ASSERT_EQ(lines().size(), 1U);
    EXPECT_THAT(lines()[0], EndsWith("two"));

    test::writeFile(m_file, "somebody's own text\n");
    syslog(LOG_ERR, "three");
    EXPECT_THAT(content(), StartsWith("somebody's own text\n"));
    EXPECT_EQ(lines().size(), 2U);
}

TEST_F(Log, ALogThatCannotBeWrittenDropsItsLines) {
    test::makeFolder(m_file);
    SetLastError(5);
    syslog(LOG_ERR, "%s -- %M", "the log is a folder");
    EXPECT_TRUE(test::isFolder(m_file));
    EXPECT_EQ(GetLastError(), 5U);
    ASSERT_NE(RemoveDirectoryW(m_file.c_str()), 0);

    test::writeFile(m_file, "");
    {
        const UniqueFile jealous(
            CreateFileW(m_file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(jealous);
        syslog(LOG_ERR, "nobody else may open it");
    }
    m_appData.set(L"Q:\\none");
    syslog(LOG_ERR, "no such drive");
    m_appData.set(L"");
    syslog(LOG_ERR, "an empty folder name");

    m_appData.set(test::wide(m_base));
    syslog(LOG_ERR, "back");
    ASSERT_EQ(lines().size(), 1U);
    EXPECT_THAT(lines()[0], EndsWith(": back"));
}

TEST_F(Log, UsesTheSystemsFolderWhenTheRegistryNamesNone) {
    m_appData.remove();
    wchar_t folder[MAX_PATH] = {};
    ASSERT_EQ(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder), S_OK);
    m_appData.remove();
    const std::string text = "written by test " + pid();
    syslog(LOG_ERR, "%s", text.c_str());
    EXPECT_THAT(test::readText(folder + std::wstring(L"\\OrVaneMedia\\OrVane.log")),
                EndsWith(text + "\n"));
}

TEST_F(Log, LinesOfSeveralProcessesAndThreadsDoNotMix) {
    Writer first(L"write First 2 60");
    Writer second(L"write Second 2 60");
    EXPECT_EQ(first.wait(), 0U);
    EXPECT_EQ(second.wait(), 0U);
    EXPECT_EQ(second.output(), "") << "the log's own troubles are printed only when asked for";

    // Every line whole, and each thread's lines in its order.
    std::map<std::string, int> next;
    for (const std::string& line : lines()) {
        const std::string text = afterTime(line);
        const auto message = text.find("] ");
        ASSERT_NE(message, std::string::npos) << line;
        const auto body = text.find(' ', message + 2);
        ASSERT_EQ(text.size(), body + 502) << line;
        EXPECT_EQ(text.substr(body + 1), std::string(500, text[body + 1]) + ".");
        const std::string writer = text.substr(0, message) + text[body + 1];
        EXPECT_EQ(std::stoi(text.substr(message + 2)), next[writer]++) << writer;
    }
    EXPECT_EQ(next.size(), 4U);
    for (const auto& [writer, count] : next) EXPECT_EQ(count, 60) << writer;
}

TEST_F(Log, AWriterKilledWhileWritingDoesNotBlockOthers) {
    syslog(LOG_ERR, "whole");  // this handle keeps the lock in being
    test::writeFile(m_file, "2026-01-01 00:00:00 : <3> Dead : half a li");
    EXPECT_EQ(Writer(L"die").wait(), 7U);
    syslog(LOG_ERR, "next");
    syslog(LOG_ERR, "after");
    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 3U);
    EXPECT_THAT(written[0], EndsWith("half a li"));
    EXPECT_EQ(afterTime(written[1]), "<3> unknown : next");
    EXPECT_EQ(afterTime(written[2]), "<3> unknown : after");
}

TEST_F(Log, TheMutexIsAccessibleToEveryUser) {
    syslog(LOG_ERR, "made");
    const UniqueHandle mutex(OpenMutexA(READ_CONTROL | SYNCHRONIZE, FALSE, "Global\\OrVaneLog"));
    ASSERT_TRUE(mutex);
    PACL list = nullptr;
    UniqueLocalMemory descriptor;
    ASSERT_EQ(GetSecurityInfo(mutex.get(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, descriptor.put()),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(list, nullptr) << "no access list: all to everyone";
}

TEST_F(Log, AfterCloseOnExitTheMutexIsClosedAfterEachMessage) {
    closelog();
    EXPECT_EQ(Writer(L"exit").wait(), 0U);
    ASSERT_EQ(lines().size(), 2U);
    EXPECT_THAT(lines()[1], EndsWith(": after"));
}

TEST_F(Log, OptionsPrintDiagnosticsAndLinesOnTheConsole) {
    Writer loud(L"loud");
    EXPECT_EQ(loud.wait(), 0U);
    const std::string printed = loud.output();
    EXPECT_THAT(printed, HasSubstr("I: do_makelock: mutex Global\\OrVaneLog created"));
    EXPECT_THAT(printed, HasSubstr(" : <4> Loud : ["));
    EXPECT_THAT(printed, EndsWith("] heard\r\n"));
}

}  // namespace

// The import library's own name, so that the program under test calls ours.
[[gnu::used]] decltype(&formatMessage) importedFormatMessage asm("__imp__FormatMessageW@28") =
    &formatMessage;

}  // namespace orvane
