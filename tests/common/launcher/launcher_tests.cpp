#include <gmock/gmock.h>

#include <chrono>

#include "common/launcher/orvane_launcher.h"
#include "platform/handles.h"
#include "tests/common/launcher/installed_app.h"
#include "tests/support/captured_log.h"
#include "tests/support/temp_folder.h"

namespace orvane {
namespace {

using test::CapturedLog;
using test::InstalledApp;
using testing::HasSubstr;
using testing::Not;

constexpr int kWmp = 3;

std::wstring wide(const juce::String& text) { return text.toWideCharPointer(); }

class LauncherTest : public testing::Test {
protected:
    InstalledApp m_app;
    OrvaneLauncher m_launcher{kWmp};
};

TEST_F(LauncherTest, FindsAndStartsTheProgramHoweverItsFolderIsSpelled) {
    const std::wstring root = InstalledApp::root();
    // Too long for the shell in units, though not in characters.
    std::wstring faces;
    for (int i = 0; i < 60; ++i) faces += L"\U0001F600";
    const std::wstring deep = root + L"\\" + faces + L"\\" + faces + std::wstring(L"日");
    const std::wstring deepOddly =
        L"C:/orvane-launcher-tests\\\\" + faces + L"//" + faces + L"日\\";
    m_app.install(root + L"\\plain");
    m_app.install(root + L"\\Né 日本");
    m_app.install(deep);

    for (const std::wstring& folder : {root + L"\\plain", root + L"\\plain\\", root + L"\\\\plain",
                                       std::wstring(L"C:/orvane-launcher-tests//plain"),
                                       root + L"\\Né 日本", deep, deep + L"\\", deepOddly}) {
        SCOPED_TRACE(testing::PrintToString(folder));
        m_app.registerFolder(folder);
        m_app.behave("0");
        const std::wstring path = folder + L"\\OrVaneApp.exe";
        EXPECT_EQ(wide(m_launcher.getPath()), path);
        EXPECT_TRUE(m_launcher.isInstalled());
        EXPECT_TRUE(m_launcher.launch());
        EXPECT_EQ(InstalledApp::commandLine(), L"\"" + path + L"\" --launched-by=wmp");
        if (path.size() < MAX_PATH) {
            EXPECT_THAT(InstalledApp::workingDirectory(),
                        testing::AnyOf(root + L"\\plain", root + L"\\Né 日本"));
        }
    }
}

TEST_F(LauncherTest, JudgesTheStartByItsFirstThreeSeconds) {
    const std::wstring folder = InstalledApp::root() + L"\\plain";
    m_app.install(folder);
    m_app.registerFolder(folder);
    CapturedLog log;

    m_app.behave("2");
    EXPECT_FALSE(m_launcher.launch());
    EXPECT_THAT(log.take(), HasSubstr("AppLauncher::launch: app code: 2\n"));

    m_app.behave("stay");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(m_launcher.launch());
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(2990));
    EXPECT_LT(waited, std::chrono::milliseconds(6000));
    EXPECT_THAT(log.take(), Not(HasSubstr("AppLauncher")));
}

TEST_F(LauncherTest, StartsNothingWithoutAUsableFolder) {
    const std::wstring root = InstalledApp::root();
    test::makeFolder(root + L"\\empty");
    test::makeFolder(root + L"\\folder\\OrVaneApp.exe");
    CapturedLog log;
    const auto expectNone = [&] {
        EXPECT_TRUE(m_launcher.getPath().isEmpty());
        EXPECT_FALSE(m_launcher.isInstalled());
        log.take();
        EXPECT_FALSE(m_launcher.launch());
        const std::string lines = log.take();
        EXPECT_THAT(lines, HasSubstr("OrvaneLauncher::getPath: looking for OrVane executable path "
                                     "in HKLM\\Software\\OrVaneMedia\\Settings\\Path"));
        EXPECT_THAT(lines,
                    HasSubstr("AppLauncher::launch: failed launching OrVane app (path not found)"));
        return lines;
    };

    expectNone();  // no value
    for (const wchar_t* folder : {L"\\empty", L"\\folder"}) {
        m_app.registerFolder(root + folder);
        const std::string path = juce::String((root + folder).c_str()).toStdString();
        EXPECT_THAT(expectNone(), HasSubstr("OrvaneLauncher::getPath: can't find OrVane "
                                            "executable at " +
                                            path + "\\OrVaneApp.exe\n"));
    }
    for (const std::wstring& folder :
         {L"\"" + root + L"\\plain\"", std::wstring(L"http://localhost/app"), std::wstring(L" "),
          std::wstring(L"no such folder"), std::wstring(L"\\\\?\\"), std::wstring(L"\\\\.\\pipe"),
          std::wstring(100000, L'x'), std::wstring(L"%s%n%M")}) {
        SCOPED_TRACE(testing::PrintToString(folder.substr(0, 40)));
        m_app.registerFolder(folder);
        expectNone();
    }
    const DWORD number = 7;
    m_app.registerData(REG_DWORD, &number, sizeof(number));
    expectNone();
    m_app.registerData(REG_SZ, "odd", 3);
    expectNone();
}

// With a path too long for the shell's message box, so that nobody has to press anything.
TEST_F(LauncherTest, ReportsAProgramThatCannotBeStarted) {
    CapturedLog log;
    const std::wstring deep =
        InstalledApp::root() + L"\\" + std::wstring(130, L'c') + L"\\" + std::wstring(130, L'd');
    m_app.installContent(deep, "no program");
    m_app.registerFolder(deep);
    EXPECT_FALSE(m_launcher.launch());
    EXPECT_THAT(log.take(), HasSubstr("AppLauncher::launch: failed launching (code=0x000000c1)\n"));
}

TEST_F(LauncherTest, TellsWhetherTheApplicationRuns) {
    EXPECT_FALSE(m_launcher.isAppRunning());
    EXPECT_FALSE(m_launcher.isAppRunning()) << "the question itself must not leave the mutex";
    UniqueHandle mutex(CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process"));
    EXPECT_TRUE(m_launcher.isAppRunning());
    EXPECT_TRUE(m_launcher.isAppRunning());
    mutex.reset();
    EXPECT_FALSE(m_launcher.isAppRunning());
}

TEST_F(LauncherTest, StartsNothingForAPlayerThatItDoesNotKnow) {
    m_app.install(InstalledApp::root());
    m_app.registerFolder(InstalledApp::root());
    CapturedLog log;
    EXPECT_FALSE(OrvaneLauncher(7).launch());
    EXPECT_THAT(log.take(), HasSubstr("HostLauncher::launch: unknown player id: 7\n"));
    EXPECT_TRUE(InstalledApp::commandLine().empty());
    EXPECT_TRUE(OrvaneLauncher(5).launch());
    EXPECT_THAT(InstalledApp::commandLine(), testing::EndsWith(L" --launched-by=itunes"));
}

}  // namespace
}  // namespace orvane
