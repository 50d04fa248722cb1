// Fuzzes the payload decoder with any bytes: they are decoded, parsed, read with every getter, and
// written again as the same message.

#include <string>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "fuzz/require.h"
#include "fuzz/strict_utf8.h"

using namespace orvane;
using fuzz::require;

namespace {

// A document's own line ends are "\n" to whoever parses it, and values hold theirs unescaped.
std::u16string asParsed(const juce::String& text) {
    std::u16string parsed;
    for (const StringUnit* unit = unitsOf(text); *unit != 0; ++unit) {
        if (*unit == '\r' && unit[1] == '\n') continue;
        parsed += *unit == '\r' ? u'\n' : static_cast<char16_t>(*unit);
    }
    return parsed;
}

bool sameUnits(const juce::String& a, const juce::String& b) {
    return std::u16string_view(reinterpret_cast<const char16_t*>(unitsOf(a)),
                               lengthOf(unitsOf(a))) ==
           std::u16string_view(reinterpret_cast<const char16_t*>(unitsOf(b)), lengthOf(unitsOf(b)));
}

juce::String inCapitals(const juce::String& key) {
    std::u16string units;
    for (const StringUnit* unit = unitsOf(key); *unit != 0; ++unit)
        units += static_cast<char16_t>(*unit >= 'a' && *unit <= 'z' ? *unit - ('a' - 'A') : *unit);
    return stringOfUnits(units);
}

void requireReadable(const OrvaneMessage& message) {
    for (const auto& [key, value] : message.getParameters()) {
        require(sameUnits(message.getValue(key), value), "a value is found under its own key");
        require(sameUnits(message.getValue(inCapitals(key)), value), "keys ignore case");
    }
    juce::StringArray list;
    require(message.getList("t", list) == !list.isEmpty(), "a list says whether it holds anything");
    for (int i = 0; i < list.size(); ++i)
        require(list[i].isNotEmpty() && sameUnits(list[i], message.getValue("t" + juce::String(i))),
                "a list's entries are its keys' values");
    require(message.getValue("t" + juce::String(list.size())).isEmpty(),
            "a list is read to its end");
    juce::StringPairArray map;
    message.getMap("m", map);
    require(map.getAllKeys().size() == map.getAllValues().size(), "each key of a map has a value");
}

void requireSame(const OrvaneMessage& sent, const OrvaneMessage* received) {
    require(received != nullptr, "what was parsed and written parses again");
    require(sameUnits(received->getTagName(), sent.getTagName()), "the kind of message stays");
    require(sameUnits(received->getName(), sent.getName()), "the name stays");
    const auto& before = sent.getParameters();
    const auto& after = received->getParameters();
    require(before.size() == after.size(), "there are as many parameters as before");
    for (std::size_t i = 0; i < before.size(); ++i) {
        require(sameUnits(before[i].key, after[i].key), "keys stay, in their order");
        require(asParsed(before[i].value) == asParsed(after[i].value), "values stay");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = validUtf8({data, size});
    require(fuzz::isStrictUtf8(text), "a payload's text is UTF-8 whatever its bytes");
    const juce::String units = fromLooseUtf8({reinterpret_cast<const char*>(data), size});
    std::string loose;
    appendLooseUtf8(units, loose);
    require(sameUnits(fromLooseUtf8(loose), units), "any units survive loose UTF-8");

    const auto message = OrvaneMessage::parsePayload({data, size});
    if (message == nullptr) return 0;
    requireReadable(*message);
    requireSame(*message, OrvaneMessage::parsePayload(message->toPayload()).get());
    requireSame(*message, OrvaneMessage::parse(message->toDocument()).get());
    return 0;
}
