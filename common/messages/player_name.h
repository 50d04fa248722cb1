#pragma once

#include <juce_core/juce_core.h>

namespace orvane {

// The name under which every event reports this player: one constant for the whole process, so
// that no event pays for a new string. Any thread.
[[nodiscard]] inline const juce::String& playerName() {
    static const juce::String name("wmp");
    return name;
}

}  // namespace orvane
