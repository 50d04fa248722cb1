#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

#include "common/launcher/orvane_launcher.h"
#include "common/names/names.h"
#include "harness/files.h"
#include "platform/handles.h"
#include "tests/common/launcher/install_path.h"
#include "tests/support/captured_log.h"
#include "tests/support/test_window.h"

namespace orvane {
namespace {

using namespace test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kWmp = 3;
constexpr const char* kReport = "C:\\orvane-launcher-tests\\report.txt";

const std::wstring& root() {
    static const std::wstring path = L"C:\\orvane-launcher-tests";
    return path;
}

std::string testProgram(const char* name) {
    std::wstring path(1024, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), 1024));
    return readText(path.substr(0, path.rfind(L'\\') + 1) + wide(name));
}

// Folders below one of its own, and the registry value that names one of them.
class LauncherTest : public testing::Test {
protected:
    LauncherTest() {
        removeAll();
        makeFolder(root());
        SetEnvironmentVariableA("ORVANE_TEST_REPORT", kReport);
        behave("0");
    }
    ~LauncherTest() override {
        SetEvent(m_leave.get());
        removeAll();
    }

    // Makes the folder (a plain absolute path of any length) with the program in it.
    static void install(const std::wstring& folder,
                        const std::string& content = testProgram("launched_app.exe")) {
        makeFolder(folder);
        writeFile(folder + L"\\OrVaneApp.exe", content);
    }
    // What the program does when it is started: an exit code, or "stay" until the test ends.
    static void behave(const char* exit) {
        DeleteFileA(kReport);
        SetEnvironmentVariableA("ORVANE_TEST_EXIT", exit);
    }
    // The command line and the working directory of the last start; empty when there was none.
    static std::pair<std::wstring, std::wstring> report() {
        std::ifstream file(kReport, std::ios::binary);
        std::string line;
        std::string directory;
        std::getline(file, line);
        std::getline(file, directory);
        return {wide(line), wide(directory)};
    }

    InstallPath m_path;
    OrvaneLauncher m_launcher{kWmp};

private:
    static void removeAll() { removeFolder(root()); }

    const UniqueHandle m_leave{CreateEventW(nullptr, TRUE, FALSE, L"OrVaneTestAppLeave")};
};

TEST_F(LauncherTest, FindsAndStartsTheProgramHoweverItsFolderIsSpelled) {
    // Too long for the shell in units, though not in characters.
    std::wstring faces;
    for (int i = 0; i < 60; ++i) faces += L"\U0001F600";
    const std::wstring deep = root() + L"\\" + faces + L"\\" + faces + std::wstring(L"日");
    const std::wstring deepOddly =
        L"C:/orvane-launcher-tests\\\\" + faces + L"//" + faces + L"日\\";
    install(root() + L"\\plain");
    install(root() + L"\\Né 日本");
    install(deep);

    for (const std::wstring& folder :
         {root() + L"\\plain", root() + L"\\plain\\", root() + L"\\\\plain",
          std::wstring(L"C:/orvane-launcher-tests//plain"), root() + L"\\Né 日本", deep,
          deep + L"\\", deepOddly}) {
        SCOPED_TRACE(testing::PrintToString(folder));
        m_path.set(folder);
        behave("0");
        const std::wstring path = folder + L"\\OrVaneApp.exe";
        EXPECT_EQ(std::wstring(m_launcher.getPath().toWideCharPointer()), path);
        EXPECT_TRUE(m_launcher.isInstalled());
        EXPECT_TRUE(m_launcher.launch());
        if (path.size() >= MAX_PATH) {
            EXPECT_EQ(report().first, L"\"" + path + L"\" --launched-by=wmp");
        } else {
            wchar_t full[MAX_PATH];  // the shell may pass on either
            ASSERT_NE(GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr), 0U);
            EXPECT_THAT(report().first,
                        testing::AnyOf(L"\"" + path + L"\" --launched-by=wmp",
                                       L"\"" + std::wstring(full) + L"\" --launched-by=wmp"));
            EXPECT_THAT(report().second,
                        testing::AnyOf(root() + L"\\plain", root() + L"\\Né 日本"));
        }
    }
}

TEST_F(LauncherTest, ReportsHowTheProgramRanForThreeSeconds) {
    const std::wstring folder = root() + L"\\plain";
    install(folder);
    m_path.set(folder);
    CapturedLog log;

    behave("2");
    EXPECT_FALSE(m_launcher.launch());
    EXPECT_THAT(log.take(), HasSubstr("AppLauncher::launch: app code: 2\n"));

    behave("stay");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(m_launcher.launch());
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(2990));
    EXPECT_LT(waited, std::chrono::milliseconds(6000));
    EXPECT_THAT(log.take(), Not(HasSubstr("AppLauncher")));
}

// The pipes come half a second later, made by a thread that asks this one something first.
TEST_F(LauncherTest, ServesCallsWhileItWatchesAndEndsWhenBothPipesAreThere) {
    install(root() + L"\\plain");
    m_path.set(root() + L"\\plain");
    behave("stay");
    test::AnsweringWindow window;
    std::vector<UniqueFile> pipes;
    std::thread application([&] {
        Sleep(500);
        EXPECT_EQ(window.send(test::AnsweringWindow::kMessage), 42);
        for (const wchar_t* name : {names::kEventPipe.wide(), names::kCommandPipe.wide()})
            pipes.emplace_back(CreateNamedPipeW((std::wstring(L"\\\\.\\pipe\\") + name).c_str(),
                                                PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64, 64, 0,
                                                nullptr));
    });
    const ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(m_launcher.launch());
    const ULONGLONG waited = GetTickCount64() - start;
    application.join();
    EXPECT_GE(waited, 490U);
    EXPECT_LT(waited, 1500U);
}

TEST_F(LauncherTest, StartsNothingWithoutAUsableFolder) {
    test::makeFolder(root() + L"\\empty");
    test::makeFolder(root() + L"\\folder\\OrVaneApp.exe");
    CapturedLog log;
    const auto expectNone = [&] {
        EXPECT_TRUE(m_launcher.getPath().isEmpty());
        EXPECT_FALSE(m_launcher.isInstalled());
        log.take();
        EXPECT_FALSE(m_launcher.launch());
        std::string lines = log.take();
        EXPECT_THAT(lines, HasSubstr("OrvaneLauncher::getPath: looking for OrVane executable path "
                                     "in HKLM\\Software\\OrVaneMedia\\Settings\\Path"));
        EXPECT_THAT(lines,
                    HasSubstr("AppLauncher::launch: failed launching OrVane app (path not found)"));
        return lines;
    };

    expectNone();  // no value
    for (const wchar_t* folder : {L"\\empty", L"\\folder"}) {
        m_path.set(root() + folder);
        const std::string path = juce::String((root() + folder).c_str()).toStdString();
        EXPECT_THAT(expectNone(), HasSubstr("OrvaneLauncher::getPath: can't find OrVane "
                                            "executable at " +
                                            path + "\\OrVaneApp.exe\n"));
    }
    for (const std::wstring& folder :
         {L"\"" + root() + L"\\plain\"", std::wstring(L"http://localhost/app"), std::wstring(L" "),
          std::wstring(L"no such folder"), std::wstring(L"\\\\?\\"), std::wstring(L"\\\\.\\pipe"),
          std::wstring(100000, L'x'), std::wstring(L"%s%n%M")}) {
        SCOPED_TRACE(testing::PrintToString(folder.substr(0, 40)));
        m_path.set(folder);
        expectNone();
    }
    const DWORD number = 7;
    m_path.set(REG_DWORD, &number, sizeof(number));
    expectNone();
    m_path.set(REG_SZ, "odd", 3);
    expectNone();
}

// A message box of the shell's would wait here for somebody to press its button.
TEST_F(LauncherTest, ReportsAProgramThatCannotBeStarted) {
    CapturedLog log;
    for (const std::size_t length : {1U, 130U}) {
        const std::wstring folder =
            root() + L"\\" + std::wstring(length, L'c') + L"\\" + std::wstring(length, L'd');
        install(folder, "no program");
        m_path.set(folder);
        EXPECT_FALSE(m_launcher.launch());
        // Which code the shell leaves for a file that is no program is not documented.
        EXPECT_THAT(log.take(), AllOf(HasSubstr("AppLauncher::launch: failed launching (code=0x"),
                                      Not(HasSubstr("(code=0x00000000)"))));
    }
}

TEST_F(LauncherTest, TellsWhetherTheApplicationRuns) {
    EXPECT_FALSE(m_launcher.isAppRunning());
    EXPECT_FALSE(m_launcher.isAppRunning()) << "the question itself must not leave the mutex";
    UniqueHandle mutex(CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process"));
    EXPECT_TRUE(m_launcher.isAppRunning());
    EXPECT_TRUE(m_launcher.isAppRunning());
    mutex.reset();
    EXPECT_FALSE(m_launcher.isAppRunning());

    // As an elevated application's: the empty access list lets nobody open it.
    ACL nobody{};
    SECURITY_DESCRIPTOR descriptor{};
    SECURITY_ATTRIBUTES security{sizeof(security), &descriptor, FALSE};
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof(nobody), ACL_REVISION));
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE));
    mutex.reset(CreateMutexW(&security, FALSE, L"OrVaneApp_Process"));
    EXPECT_TRUE(m_launcher.isAppRunning());
}

TEST_F(LauncherTest, StartsNothingForAPlayerThatItDoesNotKnow) {
    install(root());
    m_path.set(root());
    CapturedLog log;
    EXPECT_FALSE(OrvaneLauncher(7).launch());
    EXPECT_THAT(log.take(), HasSubstr("HostLauncher::launch: unknown player id: 7\n"));
    EXPECT_TRUE(report().first.empty());
    EXPECT_TRUE(OrvaneLauncher(5).launch());
    EXPECT_THAT(report().first, testing::EndsWith(L" --launched-by=itunes"));
}

}  // namespace
}  // namespace orvane
