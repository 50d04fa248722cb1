#include "common/messages/key_index.h"

#include <cstdint>
#include <string>

#include "common/messages/text_coding.h"

namespace orvane {
namespace {

// A polynomial over the prime field of 2^31 - 1 elements, at a point nobody outside knows: whatever
// the keys, two of them meet with a chance of their length in 2^31.
constexpr std::uint64_t prime = 0x7FFFFFFF;

std::uint64_t secretPoint() {
    static const std::uint64_t point = [] {
        constexpr std::uint64_t smallest = 0x10000;
        juce::Random random(juce::Time::getHighResolutionTicks());
        random.combineSeed(juce::Time::currentTimeMillis());
        random.combineSeed(static_cast<juce::int64>(reinterpret_cast<std::uintptr_t>(&random)));
        return smallest +
               static_cast<std::uint64_t>(random.nextInt64() & 0x7FFFFFFFFFFF) % (prime - smallest);
    }();
    return point;
}

bool isHalfOfPair(std::uint16_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

}  // namespace

juce::String foldCase(const juce::String& key) {
    std::u16string folded;
    for (const auto* unit = key.getCharPointer().getAddress(); *unit != 0; ++unit) {
        const auto value = static_cast<std::uint16_t>(*unit);
        folded += isHalfOfPair(value) ? static_cast<char16_t>(value)
                                      : static_cast<char16_t>(juce::CharacterFunctions::toUpperCase(
                                            static_cast<juce::juce_wchar>(value)));
    }
    return stringOfUnits(folded);
}

std::size_t KeyIndex::Hash::operator()(const juce::String& folded) const noexcept {
    const std::uint64_t point = secretPoint();
    std::uint64_t hash = 0;
    for (const auto* unit = folded.getCharPointer().getAddress(); *unit != 0; ++unit)
        hash = (hash * point + static_cast<std::uint16_t>(*unit) + 1) % prime;
    return static_cast<std::size_t>(hash);
}

std::optional<std::size_t> KeyIndex::find(const juce::String& key) const {
    const auto found = m_positions.find(foldCase(key));
    if (found == m_positions.end()) return std::nullopt;
    return found->second;
}

std::size_t KeyIndex::insert(const juce::String& key, std::size_t position) {
    return m_positions.emplace(foldCase(key), position).first->second;
}

}  // namespace orvane
