#include "common/messages/parameter_list.h"

#include <algorithm>
#include <numeric>
#include <string>
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

// A key in upper case, and its parameter's position.
struct FoldedKey {
    const char16_t* units;
    std::uint32_t length;
    std::uint32_t position;

    [[nodiscard]] int compare(const FoldedKey& other) const {
        if (length != other.length) return length < other.length ? -1 : 1;
        return std::char_traits<char16_t>::compare(units, other.units, length);
    }
};

// The order of compareKeys() for keys of any number and order. Each key is folded once, into one
// piece of memory.
class FoldedKeys {
public:
    explicit FoldedKeys(const std::vector<Parameter>& parameters) {
        std::size_t units = 0;
        for (const Parameter& parameter : parameters) units += lengthOf(unitsOf(parameter.key));
        m_units.reserve(units);  // the keys point into it
        m_keys.reserve(parameters.size());
        for (const Parameter& parameter : parameters) {
            const std::size_t begin = m_units.size();
            for (const StringUnit* unit = unitsOf(parameter.key); *unit != 0; ++unit)
                m_units.push_back(folded(*unit));
            m_keys.push_back({m_units.data() + begin,
                              static_cast<std::uint32_t>(m_units.size() - begin),
                              static_cast<std::uint32_t>(m_keys.size())});
        }
        std::sort(m_keys.begin(), m_keys.end(), [](const FoldedKey& a, const FoldedKey& b) {
            const int difference = a.compare(b);
            return difference != 0 ? difference < 0 : a.position < b.position;
        });
    }
    [[nodiscard]] const std::vector<FoldedKey>& sorted() const { return m_keys; }

private:
    std::vector<char16_t> m_units;
    std::vector<FoldedKey> m_keys;
};

}  // namespace

ParameterList::ParameterList(std::vector<Parameter>&& inOrder) : m_parameters(std::move(inOrder)) {
    const auto notAfter = [](const Parameter& a, const Parameter& b) {
        return compareKeys(unitsOf(a.key), unitsOf(b.key)) >= 0;
    };
    if (std::adjacent_find(m_parameters.begin(), m_parameters.end(), notAfter) ==
        m_parameters.end()) {
        m_order.resize(m_parameters.size());
        std::iota(m_order.begin(), m_order.end(), 0U);
        return;
    }
    const FoldedKeys keys(m_parameters);
    // Of equal keys the first keeps its place and gets the last one's value; the others go.
    std::vector<bool> stays(m_parameters.size());
    const FoldedKey* first = nullptr;
    for (const FoldedKey& key : keys.sorted()) {
        if (first == nullptr || first->compare(key) != 0) {
            first = &key;
            stays[key.position] = true;
            m_order.push_back(key.position);
        } else {
            m_parameters[first->position].value = m_parameters[key.position].value;
        }
    }
    if (m_order.size() == m_parameters.size()) return;
    std::vector<std::uint32_t> moved(m_parameters.size());
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < m_parameters.size(); ++i) {
        if (!stays[i]) continue;
        if (kept != i) m_parameters[kept] = std::move(m_parameters[i]);
        moved[i] = kept++;
    }
    m_parameters.resize(kept);
    for (std::uint32_t& position : m_order) position = moved[position];
}

void ParameterList::set(const juce::String& key, const juce::String& value) {
    const std::size_t slot = slotFor(unitsOf(key));
    if (isAt(slot, unitsOf(key))) {
        m_parameters[m_order[slot]].value = value;
        return;
    }
    m_order.insert(m_order.begin() + static_cast<std::ptrdiff_t>(slot),
                   static_cast<std::uint32_t>(m_parameters.size()));
    m_parameters.push_back({key, value});
}

std::size_t ParameterList::slotFor(const StringUnit* key) const {
    const auto less = [this](std::uint32_t position, const StringUnit* wanted) {
        return compareKeys(keyAt(position), wanted) < 0;
    };
    // The next key of a list comes behind all others.
    if (m_order.empty() || less(m_order.back(), key)) return m_order.size();
    return static_cast<std::size_t>(std::lower_bound(m_order.begin(), m_order.end(), key, less) -
                                    m_order.begin());
}

bool ParameterList::isAt(std::size_t slot, const StringUnit* key) const {
    return slot < m_order.size() && compareKeys(keyAt(m_order[slot]), key) == 0;
}

const juce::String* ParameterList::find(const StringUnit* key, Cursor& cursor) const {
    if (!isAt(cursor.m_slot, key)) {
        const std::size_t slot = slotFor(key);
        if (!isAt(slot, key)) return nullptr;
        cursor.m_slot = slot;
    }
    return &m_parameters[m_order[cursor.m_slot++]].value;
}

const juce::String* ParameterList::find(const juce::String& key) const {
    Cursor cursor;
    return find(unitsOf(key), cursor);
}

}  // namespace orvane
