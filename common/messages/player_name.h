#pragma once

#include <juce_core/juce_core.h>

namespace orvane {

// This player's name in all events: one constant, so that no event allocates a string. Any thread.
[[nodiscard]] inline const juce::String& playerName() {
    static const juce::String name("wmp");
    return name;
}

}  // namespace orvane
