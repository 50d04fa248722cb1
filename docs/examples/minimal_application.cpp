// The smallest application: makes both pipes, prints every event, asks whether the player plays
// when it says hello, and ends when it says goodbye.

#include <windows.h>

#include <cstdio>

#include "common/link/pipe_broadcaster.h"
#include "common/messages/orvane_message.h"

namespace {

class Printing : public orvane::PipeBroadcaster {
public:
    Printing(const juce::String& pipe, orvane::Pipe* commands, HANDLE goodbye)
        : PipeBroadcaster(pipe), m_commands(commands), m_goodbye(goodbye) {}

    // On the pipe's own thread.
    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = orvane::OrvaneMessage::parsePayload(payload);
        if (message == nullptr) return;
        const juce::String name = message->getName();
        std::printf("%s %s\n", name.toRawUTF8(), message->getValue("return_value").toRawUTF8());
        std::fflush(stdout);
        // The command pipe's own thread may wake up to its client a moment after the hello.
        for (int i = 0; name == "PlayerHello" && i < 100; ++i, Sleep(10))
            if (m_commands->send(orvane::OrvaneCommand("isPlaying"))) break;
        if (name == "PlayerGoodbye") SetEvent(m_goodbye);
    }

private:
    orvane::Pipe* const m_commands;
    const HANDLE m_goodbye;
};

}  // namespace

int main() {
    const HANDLE running = CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process");
    const HANDLE goodbye = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const auto commands = orvane::makePipe<Printing>("IpcOrvaneCommandPipe", nullptr, goodbye);
    const auto events = orvane::makePipe<Printing>("IpcOrvaneEventPipe", commands.get(), goodbye);
    if (!events->initConnection() || !commands->initConnection()) return 1;
    std::puts("ready");
    std::fflush(stdout);
    const DWORD waited = WaitForSingleObject(goodbye, 60'000);
    CloseHandle(goodbye);
    CloseHandle(running);
    return waited == WAIT_OBJECT_0 ? 0 : 2;
}
