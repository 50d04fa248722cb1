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

// Turns player happenings into event messages; the subclass owns the link they travel on.
// Event operations may come from any thread, but for hello, goodbye and window positions: these,
// connect, disconnect, isConnected and destruction belong to the thread that made the object, whose
// message loop runs its timer. No operation throws or waits for the application.
class AppConnector : public IOrvaneApplicationEvents {
public:
    // `methods` is not owned; the link shares it while a command runs.
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

    // Opens whatever is not open; true when the whole link is up afterwards. Waits for nothing.
    virtual bool connect() = 0;
    virtual void disconnect() = 0;
    virtual bool isConnected() = 0;
    // True when the link is up and the event waits to be written, in the order of the calls. False
    // when it is lost: the link is down, or, with a line in the log, it is too long for a frame.
    virtual bool postEvent(const OrvaneEvent& event) = 0;
    // The same for a sender that can do with less: the log is left alone, and `oversize` says how
    // many bytes were too many for a frame.
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

    // Only the newest one is ever sent, so a window that is dragged about while nothing is sent
    // keeps no more than these.
    static constexpr std::size_t kMaxPendingMoves = 64;

    std::deque<Rect> pendingMoves;
    bool m_timerWanted = false;  // between hello and goodbye
    MessageTimer m_moveTimer{[](void* self) { static_cast<AppConnector*>(self)->timerCallback(); },
                             this};
};

}  // namespace orvane
