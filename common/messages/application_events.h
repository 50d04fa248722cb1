#pragma once

#include <juce_core/juce_core.h>

namespace orvane {

// What the player's side reports to the application. `player` names the player ("wmp" in this
// plug-in). Rectangles are screen pixels: left, top, width, height. Calls return quickly when the
// application is away (the event is lost) and wait at most 2000 ms for one that does not read.
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
