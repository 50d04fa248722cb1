#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/messages/text_coding.h"

namespace orvane {

struct Parameter {
    juce::String key;
    juce::String value;
};

// A map from keys to values that keeps the order in which the keys were first set. Keys ignore case
// as JUCE's comparison does. A lookup is a binary search and the constructor sorts, so hostile keys
// cost O(n log n). set() also moves the 4-byte positions of all keys that sort after the new one;
// the keys of a list come in order, so it moves none. Not thread-safe.
class ParameterList {
public:
    ParameterList() = default;
    // The same as calling set() for each, in O(n log n).
    explicit ParameterList(std::vector<Parameter>&& inOrder);

    // Replaces the value of an existing key, which keeps its spelling and position, or appends a
    // new key.
    void set(const juce::String& key, const juce::String& value);

    // The position where the last lookup ended. Looking up keys in their order with one cursor
    // needs no search.
    class Cursor {
        friend class ParameterList;
        std::size_t m_slot = 0;
    };
    // The value, or null; owned by the list, valid until it changes. `key` is zero-terminated.
    [[nodiscard]] const juce::String* find(const StringUnit* key, Cursor& cursor) const;
    [[nodiscard]] const juce::String* find(const juce::String& key) const;

    [[nodiscard]] const std::vector<Parameter>& all() const { return m_parameters; }

private:
    [[nodiscard]] const StringUnit* keyAt(std::uint32_t position) const {
        return unitsOf(m_parameters[position].key);
    }
    // Where the key is in m_order, or where it belongs.
    [[nodiscard]] std::size_t slotFor(const StringUnit* key) const;
    [[nodiscard]] bool isAt(std::size_t slot, const StringUnit* key) const;

    std::vector<Parameter> m_parameters;
    std::vector<std::uint32_t> m_order;  // positions in m_parameters, sorted by key
};

}  // namespace orvane
