// The program itself, with a client that behaves as the plug-in would, or worse.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "standins/app/clean_library.h"
#include "standins/app/frame_scanner.h"
#include "standins/app/pipe_server.h"
#include "standins/support/wide_text.h"

namespace orvane::standin::app {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;

constexpr DWORD kLimitMs = 15'000;

// One end of a pipe, as the plug-in opens it.
class Client {
public:
    explicit Client(const std::string& name) {
        const std::wstring path = L"\\\\.\\pipe\\" + toWide(name);
        const ULONGLONG deadline = GetTickCount64() + kLimitMs;
        while (GetTickCount64() < deadline) {
            m_pipe.reset(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                     OPEN_EXISTING, 0, nullptr));
            if (m_pipe) return;
            Sleep(20);
        }
        ADD_FAILURE() << "cannot open " << name << ": " << systemError(GetLastError());
    }

    void send(std::string_view bytes) {
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(m_pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                              &written, nullptr));
        EXPECT_EQ(written, bytes.size());
    }
    void sendDocument(const std::string& xml) { send(frameAround(xml + '\0')); }
    void sendEvent(const std::string& name, const std::string& more = {}) {
        sendDocument("<OrVaneIPC event=\"" + name + "\"><Player>wmp</Player>" + more +
                     "</OrVaneIPC>");
    }

    // The next frame's payload, "" when none comes in time.
    std::string receive() {
        const ULONGLONG deadline = GetTickCount64() + kLimitMs;
        for (DWORD count = 0; GetTickCount64() < deadline; Sleep(5)) {
            char bytes[4096];
            if (!PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, &count, nullptr)) break;
            if (count == 0) continue;
            if (!ReadFile(m_pipe.get(), bytes, sizeof bytes, &count, nullptr)) break;
            for (auto& found : m_scanner.feed({bytes, count}))
                if (found.isFrame) return found.text;
        }
        return {};
    }

private:
    UniqueFile m_pipe;
    FrameScanner m_scanner;
};

// The program with a script; what it printed is in its transcript.
class Program {
public:
    explicit Program(const std::string& script) {
        const auto folder = std::filesystem::temp_directory_path();
        static int number = 0;
        const std::string name =
            "orvane-app-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number);
        m_script = folder / (name + ".txt");
        m_transcript = folder / (name + ".log");
        std::ofstream(m_script, std::ios::binary) << script;
        std::wstring command = L"OrVaneApp.exe --launched-by=wmp \"--script=" + m_script.wstring() +
                               L"\" \"--transcript=" + m_transcript.wstring() + L"\"";
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   nullptr, &start, &process))
            << systemError(GetLastError());
        m_process.reset(process.hProcess);
        UniqueHandle(process.hThread).reset();
    }
    ~Program() {
        if (m_process && WaitForSingleObject(m_process.get(), 0) != WAIT_OBJECT_0) {
            TerminateProcess(m_process.get(), 99);
            WaitForSingleObject(m_process.get(), kLimitMs);
        }
        std::error_code ignored;
        std::filesystem::remove(m_script, ignored);
        std::filesystem::remove(m_transcript, ignored);
    }

    DWORD exitCode() {
        DWORD code = STILL_ACTIVE;
        EXPECT_EQ(WaitForSingleObject(m_process.get(), 2 * kLimitMs), WAIT_OBJECT_0);
        GetExitCodeProcess(m_process.get(), &code);
        return code;
    }
    std::string transcript() { return contentOf(m_transcript).value_or(""); }

private:
    std::filesystem::path m_script, m_transcript;
    UniqueHandle m_process;
};

constexpr const char* kEventPipe = "IpcOrvaneEventPipe";
constexpr const char* kCommandPipe = "IpcOrvaneCommandPipe";

TEST(Conversation, GoesBothWaysAndIsWrittenDown) {
    Program program(
        "expect connected within 15000\n"
        "expect event PlayerHello within 15000\n"
        "expect event PlayStarted TrackTitle=\"Caf\xC3\xA9 Song\" within 15000\n"
        "getMediaInfoFromPath \"C:\\M\xC3\xBCsik\\a b.wma\"\n"
        "expect return true\n"
        "expect value metadataOut.TrackTitle=\"Caf\xC3\xA9 Song\"\n"
        "slow 0 isPlaying\n"
        "expect response isPlaying return_value=false within 15000\n");
    Client events(kEventPipe), commands(kCommandPipe);
    events.sendEvent("PlayerHello");
    events.sendEvent("PlayStarted",
                     "<TrackTitle>Caf&#233; Song</TrackTitle><TrackArtist/><AlbumTitle/><Genre_2/>"
                     "<Filename/><Year/><TrackNumber/>");
    EXPECT_THAT(commands.receive(), HasSubstr("<trackPath>C:\\M&#252;sik\\a b.wma</trackPath>"));
    commands.sendDocument(
        "<response event=\"getMediaInfoFromPath\"><return_value>true</return_value>"
        "<metadataOut.TrackTitle>Caf&#233; Song</metadataOut.TrackTitle></response>");
    EXPECT_THAT(commands.receive(), HasSubstr("<command event=\"isPlaying\"/>"));
    // Byte by byte in this direction, too.
    const std::string response = frameAround(
        "<response event=\"isPlaying\"><return_value>false</return_value></response>\0"s);
    for (const char c : response) commands.send(std::string_view(&c, 1));
    EXPECT_EQ(program.exitCode(), 0u);
    EXPECT_THAT(program.transcript(), HasSubstr("launched by wmp"));
    EXPECT_THAT(program.transcript(), HasSubstr("Caf\xC3\xA9 Song"));
    EXPECT_THAT(program.transcript(), HasSubstr("result: good"));
}

TEST(Conversation, SurvivesEveryKindOfBadInputAndSaysWhatItWas) {
    Program program(
        "expect connected within 15000\n"
        "expect problem \"bad magic DE AD BE EF\" within 15000\n"
        "expect problem \"bad length 10485760\" within 15000\n"
        "expect problem \"not XML\" within 15000\n"
        "expect problem \"root element is 'letter'\" within 15000\n"
        "expect problem \"stopped at 20 of 1000 payload bytes\" within 15000\n"
        "expect problem \"cut short: only 20 of 1000\" within 15000\n"
        "wait disconnected within 15000\n"
        "expect connected within 15000\n"
        "expect event PlayerHello within 15000\n"
        "pause\n");
    {
        Client events(kEventPipe);
        const Client commands(kCommandPipe);
        events.send("\xDE\xAD\xBE\xEF");
        events.send(frameAround("xx", 10'485'760));
        events.sendDocument("<OrVaneIPC event=\"PlayStopped\">");
        events.sendDocument("<letter/>");
        events.send(frameAround(std::string(20, 'x'), 1000));
        Sleep(1500);  // stops in the middle, then goes
    }
    Client events(kEventPipe), commands(kCommandPipe);
    events.sendEvent("PlayerHello");
    EXPECT_THAT(commands.receive(), HasSubstr("pause"));
    commands.sendDocument("<response event=\"pause\"><return_value>true</return_value></response>");
    EXPECT_EQ(program.exitCode(), 0u) << program.transcript();
}

TEST(Conversation, ThereIsOneProgramAndMissedChecksAreItsExitCode) {
    Program first(
        "expect connected within 15000\n"
        "expect event PlayerHello within 15000\n"
        "expect event PlayerShown within 10\n");
    Client events(kEventPipe), commands(kCommandPipe);
    const UniqueFile third(CreateFileW(L"\\\\.\\pipe\\IpcOrvaneEventPipe",
                                       GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                                       nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PIPE_BUSY});
    Program second("expect connected\n");
    EXPECT_EQ(second.exitCode(), 0u);
    EXPECT_THAT(second.transcript(), HasSubstr("another OrVaneApp is running"));
    events.sendEvent("PlayerHello");
    EXPECT_EQ(first.exitCode(), 1u);
    EXPECT_THAT(first.transcript(), HasSubstr("MISSED: expected event PlayerShown"));
}

}  // namespace
}  // namespace orvane::standin::app
