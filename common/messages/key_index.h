#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <optional>
#include <unordered_map>

namespace orvane {

// Finds a key's position in an ordered list in constant time, ignoring case as JUCE's own
// comparison does. Keys come from the other end of a pipe, so the hash is drawn at random for each
// process: no document can be made up whose keys all meet in one bucket.
class KeyIndex {
public:
    // The position stored for `key`, or none.
    [[nodiscard]] std::optional<std::size_t> find(const juce::String& key) const;
    // Stores `position` unless the key is there already; returns the position now stored.
    std::size_t insert(const juce::String& key, std::size_t position);

private:
    struct Hash {
        std::size_t operator()(const juce::String& folded) const noexcept;
    };
    std::unordered_map<juce::String, std::size_t, Hash> m_positions;  // by folded key
};

// `key` with every character that has one replaced by its upper case form.
[[nodiscard]] juce::String foldCase(const juce::String& key);

}  // namespace orvane
