#include "common/messages/parameter_list.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orvane {
namespace {

std::uint16_t folded(StringUnit unit) {
    const auto value = static_cast<std::uint16_t>(unit);
    if (value < 0x80) return value >= 'a' && value <= 'z' ? value - ('a' - 'A') : value;
    const bool halfOfPair = value >= 0xD800 && value <= 0xDFFF;
    return halfOfPair ? value
                      : static_cast<std::uint16_t>(juce::CharacterFunctions::toUpperCase(
                            static_cast<juce::juce_wchar>(value)));
}

// By length, then by units in upper case. By length first, so that the keys of a list, prefix0,
// prefix1, and so on, come in their own order.
int compareKeys(const StringUnit* a, const StringUnit* b) {
    int difference = 0;
    for (; *a != 0 && *b != 0; ++a, ++b)
        if (difference == 0 && *a != *b) difference = folded(*a) - folded(*b);
    if (*a != 0) return 1;
    return *b != 0 ? -1 : difference;
}

// Brings what a stranger has sent into the same order and looks at each unit of a key once for
// that: comparing whole keys log n times each takes seconds for the worst ten megabytes.
class KeySort {
public:
    // Of equal keys the first keeps its place and gets the last one's value; the others go.
    explicit KeySort(std::vector<Parameter>& parameters) : m_parameters(parameters) {
        m_items.reserve(parameters.size());
        for (std::uint32_t i = 0; i < parameters.size(); ++i)
            m_items.push_back(item(static_cast<std::uint32_t>(lengthOf(keyAt(i))), i));
        splitGroup({0, m_items.size(), 0});
        while (!m_groups.empty()) {
            const Group group = m_groups.back();
            m_groups.pop_back();
            lookFurther(group);
        }
        if (!m_gone.empty()) removeGone();
    }

    // The positions of what remains, in the order of their keys.
    [[nodiscard]] std::vector<std::uint32_t> order() const {
        std::vector<std::uint32_t> order;
        order.reserve(m_parameters.size());
        for (const Item it : m_items) order.push_back(positionOf(it));
        return order;
    }

private:
    // What is looked at of the key above its position, so that numbers are all there is to sort:
    // first the key's length, then two units at a time.
    using Item = std::uint64_t;
    struct Group {
        std::size_t begin, end;  // of m_items
        std::size_t depth;       // how many units their keys have in common
    };

    static Item item(std::uint32_t part, std::uint32_t position) {
        return Item{part} << 32 | position;
    }
    static std::uint32_t positionOf(Item item) { return static_cast<std::uint32_t>(item); }
    [[nodiscard]] const StringUnit* keyAt(std::uint32_t position) const {
        return unitsOf(m_parameters[position].key);
    }

    void splitGroup(const Group& group) {
        const auto at = [this](std::size_t i) {
            return m_items.begin() + static_cast<std::ptrdiff_t>(i);
        };
        if (!std::is_sorted(at(group.begin), at(group.end)))
            std::sort(at(group.begin), at(group.end));
        for (std::size_t begin = group.begin, end; begin < group.end; begin = end) {
            for (end = begin + 1; end < group.end && m_items[end] >> 32 == m_items[begin] >> 32;)
                ++end;
            if (end - begin > 1) m_groups.push_back({begin, end, group.depth});
        }
    }

    // All keys of a group are of one length, so all end at once.
    void lookFurther(Group group) {
        if (keyAt(positionOf(m_items[group.begin]))[group.depth] == 0) return merge(group);
        for (std::size_t i = group.begin; i < group.end; ++i) {
            const std::uint32_t position = positionOf(m_items[i]);
            const StringUnit* const units = keyAt(position) + group.depth;
            const std::uint32_t second = units[1] != 0 ? folded(units[1]) : 0;
            m_items[i] = item(std::uint32_t{folded(units[0])} << 16 | second, position);
        }
        group.depth += keyAt(positionOf(m_items[group.begin]))[group.depth + 1] != 0 ? 2 : 1;
        splitGroup(group);
    }

    void merge(const Group& group) {
        // Equal ones are sorted by their positions.
        m_parameters[positionOf(m_items[group.begin])].value =
            m_parameters[positionOf(m_items[group.end - 1])].value;
        m_gone.resize(m_parameters.size());
        for (std::size_t i = group.begin + 1; i < group.end; ++i)
            m_gone[positionOf(m_items[i])] = true;
    }

    void removeGone() {
        std::erase_if(m_items, [this](Item it) { return m_gone[positionOf(it)]; });
        std::vector<std::uint32_t> moved(m_parameters.size());
        std::uint32_t kept = 0;
        for (std::uint32_t i = 0; i < m_parameters.size(); ++i) {
            if (m_gone[i]) continue;
            if (kept != i) m_parameters[kept] = std::move(m_parameters[i]);
            moved[i] = kept++;
        }
        m_parameters.resize(kept);
        for (Item& it : m_items) it = moved[positionOf(it)];
    }

    std::vector<Parameter>& m_parameters;
    std::vector<Item> m_items;
    std::vector<Group> m_groups;
    std::vector<bool> m_gone;
};

}  // namespace

ParameterList::ParameterList(std::vector<Parameter>&& inOrder) : m_parameters(std::move(inOrder)) {
    if (m_parameters.empty()) return;
    const auto notAfter = [](const Parameter& a, const Parameter& b) {
        return compareKeys(unitsOf(a.key), unitsOf(b.key)) >= 0;
    };
    if (std::adjacent_find(m_parameters.begin(), m_parameters.end(), notAfter) ==
        m_parameters.end()) {
        m_order.resize(m_parameters.size());
        std::iota(m_order.begin(), m_order.end(), 0U);
    } else {
        m_order = KeySort(m_parameters).order();
    }
    m_runs.push_back(0);
}

void ParameterList::set(const juce::String& key, const juce::String& value) {
    if (const auto slot = slotOf(unitsOf(key))) {
        m_parameters[m_order[*slot]].value = value;
        return;
    }
    m_parameters.push_back({key, value});
    indexLast();
}

void ParameterList::indexLast() {
    const auto position = static_cast<std::uint32_t>(m_parameters.size() - 1);
    const auto less = [this](std::uint32_t a, std::uint32_t b) {
        return compareKeys(keyAt(a), keyAt(b)) < 0;
    };
    const bool goesOn = !m_runs.empty() && less(m_order.back(), position);
    m_order.push_back(position);
    if (!goesOn) m_runs.push_back(static_cast<std::uint32_t>(m_order.size() - 1));
    while (m_runs.size() > 1) {
        const std::uint32_t last = m_runs.back();
        const std::uint32_t before = m_runs[m_runs.size() - 2];
        if (m_order.size() - last < last - before) break;
        const auto at = [this](std::uint32_t slot) { return m_order.begin() + slot; };
        std::inplace_merge(at(before), at(last), m_order.end(), less);
        m_runs.pop_back();
    }
}

std::optional<std::size_t> ParameterList::slotOf(const StringUnit* key) const {
    auto end = m_order.end();
    for (auto run = m_runs.rbegin(); run != m_runs.rend(); ++run) {
        const auto begin = m_order.begin() + *run;
        const auto less = [&](std::uint32_t position, const StringUnit* wanted) {
            return compareKeys(keyAt(position), wanted) < 0;
        };
        if (!less(end[-1], key)) {
            const auto found = std::lower_bound(begin, end, key, less);
            if (compareKeys(keyAt(*found), key) == 0)
                return static_cast<std::size_t>(found - m_order.begin());
        }
        end = begin;
    }
    return std::nullopt;
}

const juce::String* ParameterList::find(const StringUnit* key, Cursor& cursor) const {
    if (cursor.m_slot >= m_order.size() || compareKeys(keyAt(m_order[cursor.m_slot]), key) != 0) {
        const auto slot = slotOf(key);
        if (!slot) return nullptr;
        cursor.m_slot = *slot;
    }
    return &m_parameters[m_order[cursor.m_slot++]].value;
}

const juce::String* ParameterList::find(const juce::String& key) const {
    Cursor cursor;
    return find(unitsOf(key), cursor);
}

}  // namespace orvane
