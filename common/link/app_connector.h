#pragma once

#include <juce_core/juce_core.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <utility>

#include "common/link/pipe.h"
#include "common/messages/application_events.h"
#include "common/messages/plugin_methods.h"
#include "platform/message_timer.h"

namespace orvane {

class OrvaneEvent;

// Converts the player's events into messages; the subclass owns the link that sends them. Any
// thread may call the event operations, except playerHello, playerGoodbye and playerMoved: these,
// connect, disconnect, isConnected and the destructor belong to the thread that created the object,
// whose message loop runs the timer. No operation throws or waits for the application.
class AppConnector : public IOrvaneApplicationEvents {
public:
    // `methods` is not owned; a running command shares its ownership.
    explicit AppConnector(std::weak_ptr<IOrvanePluginMethods> methods)
        : pluginMethods(std::move(methods)) {}
    virtual ~AppConnector() = default;
    AppConnector(const AppConnector&) = delete;
    AppConnector& operator=(const AppConnector&) = delete;

    void playerHello(const juce::String& player) override;
    void playerGoodbye(const juce::String& player) override;
    void playerMoved(const juce::String& player, int left, int top, int width, int height) override;
    void playerMaximized(const juce::String& player, int left, int top, int width,
                         int height) override;
    void playerMinimized(const juce::String& player) override;
    void playerHidden(const juce::String& player) override;
    void playerShown(const juce::String& player) override;
    void playerInSpecialMode(const juce::String& player, bool inSpecialMode) override;
    void playerActivated(const juce::String& player) override;
    void playStarted(const juce::String& player, const juce::String& title,
                     const juce::String& artist, const juce::String& albumTitle,
                     const juce::String& genre, const juce::String& filename,
                     const juce::String& year, const juce::String& trackNumber) override;
    void playStopped(const juce::String& player) override;
    void playPaused(const juce::String& player) override;
    void cleanTracks(const juce::String& player, const juce::StringArray& trackPaths) override;
    void mouseLButtonDown(const juce::String& player) override;

    // Opens each pipe that is not open. True when both are open afterwards. Does not wait.
    virtual bool connect() = 0;
    virtual void disconnect() = 0;
    virtual bool isConnected() = 0;
    // Queues the event; events are written in the order of the calls. False when the event is
    // dropped: the link is down, or the event is too long for a frame, which is logged.
    virtual bool postEvent(const OrvaneEvent& event) = 0;
    // The same for a sender that can split an event: logs nothing. `oversize` is the size in bytes
    // of a payload that is too long for a frame.
    virtual Pipe::Sending tryPostEvent(const OrvaneEvent& event) = 0;

    static constexpr int kMovePeriodMs = 75;

protected:
    // Sends the newest of the positions reported since the last tick. The timer runs only while a
    // position waits, so that an idle player gets no messages from here.
    void timerCallback();

    const std::weak_ptr<IOrvanePluginMethods> pluginMethods;

private:
    struct Rect {
        int left, top, width, height;
    };
    static juce::String text(const Rect& rect);
    template <typename Fill>
    void post(const char* name, const juce::String& player, const Fill& fill);
    void post(const char* name, const juce::String& player);
    bool postTracks(const juce::String& player, const juce::StringArray& trackPaths, int first,
                    int count);
    void startTimerForMoves();

    // Only the newest position is sent. This limits the memory while nothing is sent.
    static constexpr std::size_t kMaxPendingMoves = 64;

    std::deque<Rect> pendingMoves;
    bool m_timerWanted = false;  // between hello and goodbye
    MessageTimer m_moveTimer{[](void* self) { static_cast<AppConnector*>(self)->timerCallback(); },
                             this};
};

}  // namespace orvane
