#include "common/messages/orvane_message.h"

#include <utility>

namespace orvane {

OrvaneMessage::OrvaneMessage(const juce::String& rootName, const juce::String& messageName)
    : tagName(rootName), name(messageName) {}

OrvaneMessage::~OrvaneMessage() = default;

void OrvaneMessage::setValue(const juce::String& key, const juce::String& value) {
    const std::size_t position = m_index.insert(key, parameters.size());
    if (position < parameters.size())
        parameters[position].value = value;
    else
        parameters.push_back({key, value});
}

juce::String OrvaneMessage::getValue(const juce::String& key) const {
    const auto position = m_index.find(key);
    return position ? parameters[*position].value : juce::String();
}

void OrvaneMessage::addList(const juce::String& prefix, const juce::StringArray& list) {
    for (int i = 0; i < list.size(); ++i) setValue(prefix + juce::String(i), list[i]);
}

bool OrvaneMessage::getList(const juce::String& prefix, juce::StringArray& list) const {
    for (int i = 0;; ++i) {
        const juce::String value = getValue(prefix + juce::String(i));
        if (value.isEmpty()) break;
        list.add(value);
    }
    return !list.isEmpty();
}

void OrvaneMessage::addMap(const juce::String& prefix, const juce::StringPairArray& map) {
    const juce::StringArray& keys = map.getAllKeys();
    const juce::StringArray& values = map.getAllValues();
    for (int i = 0; i < map.size(); ++i) setValue(prefix + "." + keys[i], values[i]);
}

bool OrvaneMessage::getMap(const juce::String& prefix, juce::StringPairArray& map) const {
    // StringPairArray::set looks through all entries each time, and how many there are is up to the
    // sender. So the entries are found through an index and appended to the map's two lists
    // directly; both belong to the object that the caller gave us to change.
    auto& keys = const_cast<juce::StringArray&>(map.getAllKeys());
    auto& values = const_cast<juce::StringArray&>(map.getAllValues());
    KeyIndex index;
    for (int i = 0; i < keys.size(); ++i) index.insert(keys[i], static_cast<std::size_t>(i));
    // The two lists stay of one length also when memory ends: nothing below makes them grow.
    const int most = map.size() + static_cast<int>(parameters.size());
    keys.ensureStorageAllocated(most);
    values.ensureStorageAllocated(most);

    const juce::String marker = prefix + ".";
    for (const auto& [key, value] : parameters) {
        const juce::String entryKey = key.fromFirstOccurrenceOf(marker, false, false);
        if (entryKey.isEmpty()) continue;
        const std::size_t end = static_cast<std::size_t>(keys.size());
        const std::size_t position = index.insert(entryKey, end);
        if (position < end) {
            values.set(static_cast<int>(position), value);
        } else {
            keys.add(entryKey);
            values.add(value);
        }
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
