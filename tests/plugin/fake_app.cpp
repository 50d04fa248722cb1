#include "tests/plugin/fake_app.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace orvane::test {

std::string lineOf(const OrvaneMessage& message) {
    juce::String line = message.getName();
    for (const auto& [key, value] : message.getParameters()) line << " " << key << "=" << value;
    return line.toStdString();
}

bool AppPipe::deliver(const OrvaneMessage& message) {
    // The plug-in knows of the connection before this side's own thread has woken up to it.
    return pumpUntil([&] { return send(message); });
}

std::vector<OrvaneMessage> AppPipe::messages(std::size_t atLeast, DWORD timeoutMs) const {
    std::vector<OrvaneMessage> found;
    pumpUntil(
        [&] {
            const std::scoped_lock lock(m_mutex);
            if (m_messages.size() < atLeast) return false;
            found = m_messages;
            return true;
        },
        timeoutMs);
    if (!found.empty()) return found;
    const std::scoped_lock lock(m_mutex);
    return m_messages;
}

Names AppPipe::lines(std::size_t atLeast) const {
    Names lines;
    for (const OrvaneMessage& message : messages(atLeast)) lines.push_back(lineOf(message));
    return lines;
}

void AppPipe::forget() {
    const std::scoped_lock lock(m_mutex);
    m_messages.clear();
}

void AppPipe::messageReceived(std::span<const std::uint8_t> payload) {
    const auto message = OrvaneMessage::parsePayload(payload);
    const std::scoped_lock lock(m_mutex);
    m_messages.push_back(message != nullptr ? *message : OrvaneMessage("none", "unreadable"));
}

void FakeApp::openPipes() {
    for (AppPipe* pipe : {&events, &commands})
        if (!pipe->isConnected()) pipe->initConnection();
}

void FakeApp::closePipes() {
    events.terminate();
    commands.terminate();
}

bool FakeApp::waitForDisconnectAndReopen() {
    const bool left =
        pumpUntil([this] { return !events.isConnected() && !commands.isConnected(); });
    openPipes();
    return left;
}

Names FakeApp::waitForEvents(std::size_t count, DWORD timeoutMs) const {
    Names names;
    for (const OrvaneMessage& event : events.messages(count, timeoutMs))
        names.push_back(event.getName().toStdString());
    return names;
}

Names FakeApp::waitForResponses(std::size_t count) const {
    Names names;
    for (const OrvaneMessage& response : commands.messages(count))
        names.push_back(
            (response.getName() + "=" + response.getValue("return_value")).toStdString());
    return names;
}

void FakeApp::forget() {
    events.forget();
    commands.forget();
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
