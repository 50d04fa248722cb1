#pragma once

#include <juce_core/juce_core.h>

namespace orvane {

// The events that the plug-in sends to the application. `player` is the player's name ("wmp" in
// this plug-in). Positions and sizes are in screen pixels. No call waits for the application: an
// event is queued, or dropped while the link is down.
class IOrvaneApplicationEvents {
public:
    virtual void playerHello(const juce::String& player) = 0;
    virtual void playerGoodbye(const juce::String& player) = 0;
    virtual void playerMoved(const juce::String& player, int left, int top, int width,
                             int height) = 0;
    virtual void playerMaximized(const juce::String& player, int left, int top, int width,
                                 int height) = 0;
    virtual void playerMinimized(const juce::String& player) = 0;
    virtual void playerHidden(const juce::String& player) = 0;
    virtual void playerShown(const juce::String& player) = 0;
    virtual void playerInSpecialMode(const juce::String& player, bool inSpecialMode) = 0;
    virtual void playerActivated(const juce::String& player) = 0;
    virtual void playStarted(const juce::String& player, const juce::String& title,
                             const juce::String& artist, const juce::String& albumTitle,
                             const juce::String& genre, const juce::String& filename,
                             const juce::String& year, const juce::String& trackNumber) = 0;
    virtual void playStopped(const juce::String& player) = 0;
    virtual void playPaused(const juce::String& player) = 0;
    virtual void cleanTracks(const juce::String& player, const juce::StringArray& trackPaths) = 0;
    virtual void mouseLButtonDown(const juce::String& player) = 0;

protected:
    ~IOrvaneApplicationEvents() = default;
};

}  // namespace orvane
