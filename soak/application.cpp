// The application that is there to be killed: asks without end, reads all that comes, and makes its
// pipes anew for the next plug-in.

#include <juce_core/juce_core.h>

#include <algorithm>
#include <array>
#include <random>

#include "common/link/pipe_broadcaster.h"
#include "common/messages/orvane_message.h"
#include "soak/child.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::soak {
namespace {

class EventEnd final : public PipeBroadcaster {
public:
    EventEnd(SharedCounts& counts, bool deaf)
        : PipeBroadcaster("IpcOrvaneEventPipe"), m_counts(counts), m_deaf(deaf) {}
    ~EventEnd() override { closeForGood(); }

    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = OrvaneMessage::parsePayload(payload);
        if (message == nullptr || message->getTagName() != OrvaneEvent("").getTagName()) {
            ++m_counts->unreadable;
            return;
        }
        ++m_counts->events;
        if (message->getName() == "CleanTracks") countTracks(*message);
        if (message->getName() == "PlayerHello") {
            ++m_counts->hellos;
            if (m_deaf) Sleep(INFINITE);
        }
    }

private:
    void countTracks(const OrvaneMessage& message) {
        juce::StringArray paths;
        message.getList("trackPaths", paths);
        std::uint32_t hash = m_counts->tracksHash;
        for (const auto& path : paths) hash = hashPath(hash, path.toWideCharPointer());
        m_counts->tracksHash = hash;
        ++m_counts->lists;
        m_counts->tracks += static_cast<std::uint32_t>(paths.size());
    }

    SharedCounts& m_counts;
    const bool m_deaf;
};

class CommandEnd final : public PipeBroadcaster {
public:
    explicit CommandEnd(SharedCounts& counts)
        : PipeBroadcaster("IpcOrvaneCommandPipe"), m_counts(counts) {}
    ~CommandEnd() override { closeForGood(); }

    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = OrvaneMessage::parsePayload(payload);
        if (message == nullptr || message->getTagName() != OrvaneResponse("").getTagName())
            ++m_counts->unreadable;
        else
            ++m_counts->responses;
    }

private:
    SharedCounts& m_counts;
};

}  // namespace

int runApplication(const std::wstring& name, bool deaf) {
    openlog("orvane_soak_app", LOG_PID, 0);
    setlogmask(63);  // as the plug-in does
    const UniqueHandle running(CreateMutexW(nullptr, FALSE, kRunningMutex));
    SharedCounts counts(name);
    EventEnd events(counts, deaf);
    CommandEnd commands(counts);
    constexpr std::array kCommands = {"isPlaying",       "getTrackCount", "getMediaInfoFromIndex",
                                      "isInSpecialMode", "isRepeatAll",   "getCurrentMediaInfo",
                                      "noCommandAtAll"};
    std::minstd_rand random(GetCurrentProcessId() + GetTickCount());
    for (;;) {
        if (!events.isConnected()) events.initConnection();
        if (!commands.isConnected()) commands.initConnection();
        // Bursts and pauses: the plug-in is at times behind, at times idle.
        for (unsigned burst = random() % 8; burst > 0; --burst) {
            OrvaneCommand command(kCommands[random() % kCommands.size()]);
            command.setValue("trackIndex", juce::String(static_cast<int>(random() % 100)));
            if (!commands.send(command)) break;
        }
        Sleep(random() % 8);
    }
}

}  // namespace orvane::soak
