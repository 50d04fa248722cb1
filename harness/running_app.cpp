#include "harness/running_app.h"

#include <utility>

#include "harness/waiting.h"

namespace orvane::test {

std::string lineOf(const OrvaneMessage& message) {
    juce::String line = message.getName();
    for (const auto& [key, value] : message.getParameters()) line << " " << key << "=" << value;
    return line.toStdString();
}

class AppEnd::Connection final : public PipeBroadcaster {
public:
    Connection(const char* name, AppEnd& owner) : PipeBroadcaster(name), m_owner(owner) {}
    void messageReceived(std::span<const std::uint8_t> payload) override { m_owner.take(payload); }

private:
    AppEnd& m_owner;
};

bool AppEnd::initConnection() {
    m_connection.reset();  // there is one instance of the pipe
    m_connection = makePipe<Connection>(m_name, *this);
    return m_connection->initConnection();
}

bool AppEnd::deliver(const OrvaneMessage& message) {
    return pumpUntil([&] { return send(message); });
}

std::vector<OrvaneMessage> AppEnd::messages(std::size_t atLeast, DWORD timeoutMs) const {
    const auto isThere = [&] {
        const std::scoped_lock lock(m_mutex);
        return m_messages.size() >= atLeast;
    };
    pumpUntil(isThere, timeoutMs);
    const std::scoped_lock lock(m_mutex);
    return m_messages;
}

Names AppEnd::lines(std::size_t atLeast, DWORD timeoutMs) const {
    Names lines;
    for (const auto& message : messages(atLeast, timeoutMs)) lines.push_back(lineOf(message));
    return lines;
}

void AppEnd::forget() {
    const std::scoped_lock lock(m_mutex);
    m_messages.clear();
}

void AppEnd::take(std::span<const std::uint8_t> payload) {
    const auto message = OrvaneMessage::parsePayload(payload);
    if (m_handler) return m_handler(message.get());
    const std::scoped_lock lock(m_mutex);
    m_messages.push_back(message ? *message : OrvaneMessage("none", "unreadable"));
}

RunningApp::RunningApp(AppEnd::Handler onEvent, AppEnd::Handler onResponse)
    : events(names::kEventPipe.narrow(), std::move(onEvent)),
      commands(names::kCommandPipe.narrow(), std::move(onResponse)) {
    openPipes();
}

bool RunningApp::openPipes() {
    const bool hasEvents = events.isConnected() || events.initConnection();
    const bool hasCommands = commands.isConnected() || commands.initConnection();
    return hasEvents && hasCommands;
}

void RunningApp::closePipes() {
    events.terminate();
    commands.terminate();
}

bool RunningApp::waitForDisconnectAndReopen() {
    const bool left = pumpUntil([&] { return !events.isConnected() && !commands.isConnected(); });
    forget();
    openPipes();
    return left;
}

void RunningApp::forget() {
    events.forget();
    commands.forget();
}

}  // namespace orvane::test
