#include "tests/plugin/fake_app.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/orvane_message.h"
#include "common/text_coding.h"

namespace orvane::test {

bool pumpUntil(const std::function<bool()>& done, DWORD timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (;;) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (done()) return true;
        if (GetTickCount64() >= end) return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

void pumpFor(DWORD milliseconds) {
    pumpUntil([] { return false; }, milliseconds);
}

class FakeApp::RecordingPipe : public PipeBroadcaster {
public:
    RecordingPipe(const char* name, Record& record) : PipeBroadcaster(name), m_record(record) {}
    ~RecordingPipe() override { close(); }

    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = OrvaneMessage::parse(decodePayload(payload));
        const std::scoped_lock lock(m_record.mutex);
        const auto* response = dynamic_cast<OrvaneResponse*>(message.get());
        if (response != nullptr)
            m_record.responses.push_back(response->getName().toStdString() + "=" +
                                         response->getValue("return_value").toStdString());
        else
            m_record.events.push_back(message == nullptr ? "?" : message->getName().toStdString());
    }

private:
    Record& m_record;
};

FakeApp::FakeApp()
    : m_running(CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process")),
      m_events(std::make_unique<RecordingPipe>("IpcOrvaneEventPipe", m_record)),
      m_commands(std::make_unique<RecordingPipe>("IpcOrvaneCommandPipe", m_record)) {
    openPipes();
}

FakeApp::~FakeApp() = default;

void FakeApp::openPipes() {
    for (auto* pipe : {m_events.get(), m_commands.get()})
        if (!pipe->isConnected()) pipe->initConnection();
}

void FakeApp::closePipes() {
    m_events->terminate();
    m_commands->terminate();
}

bool FakeApp::waitForDisconnectAndReopen() {
    const bool left =
        pumpUntil([this] { return !m_events->isConnected() && !m_commands->isConnected(); });
    openPipes();
    return left;
}

bool FakeApp::sendCommand(const char* name) {
    // The plug-in knows of the connection before this side's own thread has woken up to it.
    return pumpUntil([&] { return m_commands->send(OrvaneCommand(name)); });
}

std::vector<std::string> FakeApp::events() const {
    const std::scoped_lock lock(m_record.mutex);
    return m_record.events;
}

std::vector<std::string> FakeApp::waitForEvents(std::size_t count, DWORD timeoutMs) {
    pumpUntil([&] { return events().size() >= count; }, timeoutMs);
    return events();
}

std::vector<std::string> FakeApp::waitForResponses(std::size_t count, DWORD timeoutMs) {
    const auto responses = [this] {
        const std::scoped_lock lock(m_record.mutex);
        return m_record.responses;
    };
    pumpUntil([&] { return responses().size() >= count; }, timeoutMs);
    return responses();
}

void FakeApp::forget() {
    const std::scoped_lock lock(m_record.mutex);
    m_record.events.clear();
    m_record.responses.clear();
}

PlayerWindow::PlayerWindow() {
    WNDCLASSW description{};
    description.lpfnWndProc = DefWindowProcW;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"WMPlayerApp";
    RegisterClassW(&description);  // the second time it is there already
    m_window = CreateWindowW(L"WMPlayerApp", L"Windows Media Player", WS_OVERLAPPEDWINDOW, 10, 10,
                             800, 600, nullptr, nullptr, description.hInstance, nullptr);
}

PlayerWindow::~PlayerWindow() { DestroyWindow(m_window); }

bool PlayerWindow::isHooked() const {
    return GetPropW(m_window, L"window_hook_this_ptr") != nullptr;
}

LogWatch::LogWatch() : m_start(read().size()) {}

std::string LogWatch::added() const {
    const std::string text = read();
    return text.substr(std::min(m_start, text.size()));
}

std::string LogWatch::read() {
    std::array<wchar_t, MAX_PATH> folder{};
    DWORD size = sizeof(folder);
    if (RegGetValueW(HKEY_LOCAL_MACHINE,
                     L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                     L"Common AppData", RRF_RT_REG_SZ, nullptr, folder.data(),
                     &size) != ERROR_SUCCESS)
        return {};
    std::ifstream file(std::filesystem::path(folder.data()) / L"OrVaneMedia" / L"OrVane.log",
                       std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace orvane::test
