#include "common/messages/orvane_message.h"

#include <charconv>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "common/messages/text_coding.h"

namespace orvane {
namespace {

// The keys of a list, prefix0, prefix1, …, one after the other in one piece of memory.
class ListKey {
public:
    explicit ListKey(const juce::String& prefix) {
        for (const StringUnit* unit = unitsOf(prefix); *unit != 0; ++unit)
            m_units += static_cast<char16_t>(*unit);
        m_prefix = m_units.size();
        write();
    }
    void next() {
        ++m_number;
        write();
    }
    [[nodiscard]] std::u16string_view text() const { return m_units; }
    [[nodiscard]] const StringUnit* units() const {
        return reinterpret_cast<const StringUnit*>(m_units.c_str());
    }

private:
    void write() {
        char digits[16];
        const char* const end = std::to_chars(digits, digits + sizeof(digits), m_number).ptr;
        m_units.resize(m_prefix);
        m_units.append(static_cast<const char*>(digits), end);
    }

    std::u16string m_units;
    std::size_t m_prefix = 0;
    int m_number = 0;
};

}  // namespace

OrvaneMessage::OrvaneMessage(const juce::String& rootName, const juce::String& messageName)
    : tagName(rootName), name(messageName) {}

OrvaneMessage::~OrvaneMessage() = default;

void OrvaneMessage::setValue(const juce::String& key, const juce::String& value) {
    parameters.set(key, value);
}

juce::String OrvaneMessage::getValue(const juce::String& key) const {
    const juce::String* const value = parameters.find(key);
    return value != nullptr ? *value : juce::String();
}

void OrvaneMessage::addList(const juce::String& prefix, const juce::StringArray& list) {
    ListKey key(prefix);
    for (const juce::String& value : list) {
        setValue(stringOfUnits(key.text()), value);
        key.next();
    }
}

bool OrvaneMessage::getList(const juce::String& prefix, juce::StringArray& list) const {
    ParameterList::Cursor cursor;
    for (ListKey key(prefix);; key.next()) {
        const juce::String* const value = parameters.find(key.units(), cursor);
        if (value == nullptr || value->isEmpty()) break;
        list.add(*value);
    }
    return !list.isEmpty();
}

void OrvaneMessage::addMap(const juce::String& prefix, const juce::StringPairArray& map) {
    const juce::StringArray& keys = map.getAllKeys();
    const juce::StringArray& values = map.getAllValues();
    for (int i = 0; i < map.size(); ++i) setValue(prefix + "." + keys[i], values[i]);
}

bool OrvaneMessage::getMap(const juce::String& prefix, juce::StringPairArray& map) const {
    std::vector<Parameter> found;
    const juce::String marker = prefix + ".";
    for (const auto& [key, value] : getParameters()) {
        juce::String entryKey = key.fromFirstOccurrenceOf(marker, false, false);
        if (entryKey.isNotEmpty()) found.push_back({std::move(entryKey), value});
    }
    // The list settles which of equal keys and values count.
    const ParameterList distinct(std::move(found));
    // StringPairArray::set() searches all entries each time. That keeps the order of a record's
    // some thirty fields; a sender who makes up thousands gets them in the order of their keys.
    constexpr std::size_t kMostInOrder = 1000;
    if (distinct.all().size() <= kMostInOrder) {
        for (const auto& [key, value] : distinct.all()) map.set(key, value);
    } else {
        std::map<juce::String, juce::String> entries;
        for (const auto& [key, value] : distinct.all()) entries.emplace(key, value);
        map.addMap(entries);
    }
    return map.size() > 0;
}

OrvaneEvent::OrvaneEvent(const juce::String& eventName) : OrvaneMessage("OrVaneIPC", eventName) {}

OrvaneCommand::OrvaneCommand(const juce::String& commandName)
    : OrvaneMessage("command", commandName) {}

OrvaneResponse::OrvaneResponse(const juce::String& commandName)
    : OrvaneMessage("response", commandName) {}

void OrvaneResponse::setReturnValue(bool value) {
    setValue("return_value", value ? "true" : "false");
}

bool OrvaneResponse::getReturnValue() const {
    return getValue("return_value").equalsIgnoreCase("true");
}

}  // namespace orvane
