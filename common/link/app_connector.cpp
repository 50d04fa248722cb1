#include "common/link/app_connector.h"

#include <algorithm>
#include <exception>

#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr const char* kNotSent = "AppConnector: %s could not be sent: %s";

// A track in the document is "<trackPaths0>", "</trackPaths0>" and its path at least.
constexpr std::size_t kLeastEntryBytes = 27;

}  // namespace

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
        syslog(LOG_ERR, kNotSent, name, e.what());
    }
}

void AppConnector::post(const char* name, const juce::String& player) {
    post(name, player, [](OrvaneEvent&) {});
}

void AppConnector::playerHello(const juce::String& player) {
    m_timerWanted = true;
    startTimerForMoves();
    post("PlayerHello", player);
}

void AppConnector::playerGoodbye(const juce::String& player) {
    m_timerWanted = false;
    m_moveTimer.stop();
    post("PlayerGoodbye", player);
}

void AppConnector::playerMoved(const juce::String&, int left, int top, int width, int height) {
    try {
        if (pendingMoves.size() == kMaxPendingMoves) pendingMoves.pop_front();
        pendingMoves.push_back({left, top, width, height});
        if (!m_moveTimer.isRunning()) startTimerForMoves();
    } catch (const std::exception& e) {
        syslog(LOG_ERR, "AppConnector: a window position was lost: %s", e.what());
    }
}

void AppConnector::startTimerForMoves() {
    if (m_timerWanted && !pendingMoves.empty()) m_moveTimer.start(kMovePeriodMs);
}

void AppConnector::timerCallback() {
    m_moveTimer.stop();
    if (!m_timerWanted || pendingMoves.empty()) return;
    const Rect newest = pendingMoves.back();
    pendingMoves.clear();
    // The application has always been sent this text here, and not the player's name.
    post("PlayerMoved", "playerName",
         [&](OrvaneEvent& event) { event.setValue("PlayerRect", text(newest)); });
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
    try {
        postTracks(player, trackPaths, 0, trackPaths.size());
    } catch (const std::exception& e) {
        syslog(LOG_ERR, kNotSent, "CleanTracks", e.what());
    }
}

// A list that does not fit one frame goes as several events, each a whole one, so that nothing of
// it is lost. How often it is cut follows from its measured size; paths of very different lengths
// may need another cut, each of at most half as many. False when the link is down.
bool AppConnector::postTracks(const juce::String& player, const juce::StringArray& trackPaths,
                              int first, int count) {
    // Nothing much longer than a frame is ever built: the player's address space is small.
    std::size_t size = static_cast<std::size_t>(count) * kLeastEntryBytes;
    for (int i = first; i < first + count; ++i)
        size += static_cast<std::size_t>(trackPaths.getReference(i).length());
    if (size < frame::kPayloadLimit) {
        OrvaneEvent event("CleanTracks");
        event.setValue("Player", player);
        event.addList("trackPaths", count == trackPaths.size()
                                        ? trackPaths
                                        : juce::StringArray(trackPaths.begin() + first, count));
        const Pipe::Sending sending = tryPostEvent(event);
        if (sending.oversize == 0) return sending.sent;
        size = sending.oversize;
    }
    if (count == 1) {
        syslog(LOG_ERR, kNotSent, "CleanTracks", "a path is too long for a frame");
        return true;
    }
    const auto parts = std::min<std::int64_t>(count, size / frame::kPayloadLimit + 1);
    int begin = 0;
    for (int part = 1; part <= parts; ++part) {
        const int end = static_cast<int>(std::int64_t{count} * part / parts);
        if (!postTracks(player, trackPaths, first + begin, end - begin)) return false;
        begin = end;
    }
    return true;
}

void AppConnector::mouseLButtonDown(const juce::String& player) {
    post("MouseLButtonDown", player);
}

}  // namespace orvane
