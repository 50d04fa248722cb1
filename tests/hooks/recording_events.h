#pragma once

#include <string>
#include <utility>
#include <vector>

#include "common/messages/application_events.h"

namespace orvane::test {

// Writes each event down as one line, "playerMoved 10,20,300,80"; other players than "wmp" and
// events that a window never gives rise to stand out.
class RecordingEvents final : public IOrvaneApplicationEvents {
public:
    std::vector<std::string> take() { return std::exchange(m_lines, {}); }

    void playerHello(const juce::String& player) override { add(player, "playerHello"); }
    void playerGoodbye(const juce::String& player) override { add(player, "playerGoodbye"); }
    void playerMoved(const juce::String& player, int left, int top, int width,
                     int height) override {
        add(player, "playerMoved " + area(left, top, width, height));
    }
    void playerMaximized(const juce::String& player, int left, int top, int width,
                         int height) override {
        add(player, "playerMaximized " + area(left, top, width, height));
    }
    void playerMinimized(const juce::String& player) override { add(player, "playerMinimized"); }
    void playerHidden(const juce::String& player) override { add(player, "playerHidden"); }
    void playerShown(const juce::String& player) override { add(player, "playerShown"); }
    void playerInSpecialMode(const juce::String& player, bool inSpecialMode) override {
        add(player, inSpecialMode ? "special" : "not special");
    }
    void playerActivated(const juce::String& player) override { add(player, "playerActivated"); }
    void playStarted(const juce::String& player, const juce::String&, const juce::String&,
                     const juce::String&, const juce::String&, const juce::String&,
                     const juce::String&, const juce::String&) override {
        add(player, "playStarted");
    }
    void playStopped(const juce::String& player) override { add(player, "playStopped"); }
    void playPaused(const juce::String& player) override { add(player, "playPaused"); }
    void cleanTracks(const juce::String& player, const juce::StringArray&) override {
        add(player, "cleanTracks");
    }
    void mouseLButtonDown(const juce::String& player) override { add(player, "mouseLButtonDown"); }

private:
    static std::string area(int left, int top, int width, int height) {
        return std::to_string(left) + "," + std::to_string(top) + "," + std::to_string(width) +
               "," + std::to_string(height);
    }
    void add(const juce::String& player, const std::string& line) {
        m_lines.push_back(player == "wmp" ? line : player.toStdString() + ": " + line);
    }

    std::vector<std::string> m_lines;
};

}  // namespace orvane::test
