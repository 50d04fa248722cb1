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

// An ordered map from keys to values, in the order in which the keys were first set. Keys ignore
// case as JUCE's own comparison does. Lookup is a binary search, and the constructor sorts, so
// hostile keys cost n log n. set() also moves the 4-byte positions of all keys that sort behind the
// new one; for a list's keys, which come in their order, there are none. No lock.
class ParameterList {
public:
    ParameterList() = default;
    // The same as calling set() for each, in n log n at most.
    explicit ParameterList(std::vector<Parameter>&& inOrder);

    // Replaces the value of an existing key, which keeps its spelling and place, or appends.
    void set(const juce::String& key, const juce::String& value);

    // The place where the last lookup ended. Keys that are looked up in their order with one cursor
    // are found without a search.
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
