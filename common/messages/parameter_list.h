#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "common/messages/text_coding.h"

namespace orvane {

struct Parameter {
    juce::String key;
    juce::String value;
};

// Parameters in the order in which their keys were first set; keys ignore case as JUCE's own
// comparison does. Keys come from the other end of a pipe, so no choice of them may be a bad one:
// any mix of setting and finding n keys takes n log n comparisons to set and log n squared to find,
// at worst. Keys that come in order, as a list's do, are the fast case for both.
class ParameterList {
public:
    ParameterList() = default;
    // As if set one after the other.
    explicit ParameterList(std::vector<Parameter>&& inOrder);

    // Replaces the value of an existing key, which keeps its spelling and place, or appends.
    void set(const juce::String& key, const juce::String& value);

    // Where keys are asked for in their order, each is found at the first look: one cursor for all
    // of them.
    class Cursor {
        friend class ParameterList;
        std::size_t m_slot = 0;
    };
    // The value, or null; it stays where it is until the list changes. `key` ends with a zero.
    [[nodiscard]] const juce::String* find(const StringUnit* key, Cursor& cursor) const;
    [[nodiscard]] const juce::String* find(const juce::String& key) const;

    [[nodiscard]] const std::vector<Parameter>& all() const { return m_parameters; }

private:
    [[nodiscard]] const StringUnit* keyAt(std::uint32_t position) const {
        return unitsOf(m_parameters[position].key);
    }
    [[nodiscard]] std::optional<std::size_t> slotOf(const StringUnit* key) const;
    void indexLast();

    std::vector<Parameter> m_parameters;
    // Their positions in runs, each ordered by key and shorter than the one before it, so there are
    // log n of them; a new run that is no longer shorter is merged with the one before.
    std::vector<std::uint32_t> m_order;
    std::vector<std::uint32_t> m_runs;  // where each begins in m_order
};

}  // namespace orvane
