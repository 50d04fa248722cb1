#include "common/link/app_connector.h"

#include <exception>

#include "common/messages/orvane_message.h"
#include "util/log/log.h"

namespace orvane {

AppConnector::~AppConnector() { stopTimer(); }

juce::String AppConnector::text(const Rect& rect) {
    return juce::String::formatted("%i,%i,%i,%i", rect.left, rect.top, rect.width, rect.height);
}

// The player calls these from its window procedure and its events, where nothing may be thrown.
template <typename Fill>
void AppConnector::post(const char* name, const juce::String& player, const Fill& fill) {
    try {
        OrvaneEvent event(name);
        event.setValue("Player", player);
        fill(event);
        postEvent(event);  // an event that finds the link down is lost
    } catch (const std::exception& e) {
        syslog(LOG_ERR, "AppConnector: %s could not be sent: %s", name, e.what());
    }
}

void AppConnector::post(const char* name, const juce::String& player) {
    post(name, player, [](OrvaneEvent&) {});
}

void AppConnector::playerHello(const juce::String& player) {
    m_timerWanted = true;
    startTimer(kMovePeriodMs);
    post("PlayerHello", player);
}

void AppConnector::playerGoodbye(const juce::String& player) {
    m_timerWanted = false;
    stopTimer();
    post("PlayerGoodbye", player);
}

void AppConnector::playerMoved(const juce::String&, int left, int top, int width, int height) {
    try {
        const juce::ScopedLock lock(m_movesLock);
        if (pendingMoves.size() == kMaxPendingMoves) {
            pendingMoves.pop_front();
            ++m_movesTaken;
        }
        pendingMoves.push_back({left, top, width, height});
    } catch (const std::exception& e) {
        syslog(LOG_ERR, "AppConnector: a window position was lost: %s", e.what());
    }
}

void AppConnector::timerCallback() {
    Rect newest{};
    std::uint64_t takenUpTo = 0;
    {
        const juce::ScopedLock lock(m_movesLock);
        if (pendingMoves.empty()) return;
        newest = pendingMoves.back();
        takenUpTo = m_movesTaken + pendingMoves.size();
    }
    stopTimer();
    post("PlayerMoved", "playerName",
         [&](OrvaneEvent& event) { event.setValue("PlayerRect", text(newest)); });
    {
        const juce::ScopedLock lock(m_movesLock);
        for (; m_movesTaken < takenUpTo && !pendingMoves.empty(); ++m_movesTaken)
            pendingMoves.pop_front();
    }
    // Goodbye may have come in the meantime, from another thread.
    if (m_timerWanted) startTimer(kMovePeriodMs);
}

void AppConnector::playerMaximized(const juce::String& player, int left, int top, int width,
                                   int height) {
    post("PlayerMaximized", player, [&](OrvaneEvent& event) {
        event.setValue("PlayerRect", text({left, top, width, height}));
    });
}

void AppConnector::playerMinimized(const juce::String& player) { post("PlayerMinimized", player); }

void AppConnector::playerHidden(const juce::String& player) { post("PlayerHidden", player); }

void AppConnector::playerShown(const juce::String& player) { post("PlayerShown", player); }

void AppConnector::playerInSpecialMode(const juce::String& player, bool inSpecialMode) {
    post("PlayerInSpecialMode", player, [&](OrvaneEvent& event) {
        event.setValue("inSpecialMode", inSpecialMode ? "true" : "false");
    });
}

void AppConnector::playerActivated(const juce::String& player) { post("PlayerActivated", player); }

void AppConnector::playStarted(const juce::String& player, const juce::String& title,
                               const juce::String& artist, const juce::String& albumTitle,
                               const juce::String& genre, const juce::String& filename,
                               const juce::String& year, const juce::String& trackNumber) {
    post("PlayStarted", player, [&](OrvaneEvent& event) {
        event.setValue("TrackTitle", title);
        event.setValue("TrackArtist", artist);
        event.setValue("AlbumTitle", albumTitle);
        event.setValue("Genre_2", genre);
        event.setValue("Filename", filename);
        event.setValue("Year", year);
        event.setValue("TrackNumber", trackNumber);
    });
}

void AppConnector::playStopped(const juce::String& player) { post("PlayStopped", player); }

// To the application a pause is a stop.
void AppConnector::playPaused(const juce::String& player) { post("PlayStopped", player); }

void AppConnector::cleanTracks(const juce::String& player, const juce::StringArray& trackPaths) {
    post("CleanTracks", player,
         [&](OrvaneEvent& event) { event.addList("trackPaths", trackPaths); });
}

void AppConnector::mouseLButtonDown(const juce::String& player) {
    post("MouseLButtonDown", player);
}

}  // namespace orvane
