#pragma once

#include <juce_core/juce_core.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages/parameter_list.h"

namespace orvane {

class IOrvanePluginMethods;
class OrvaneResponse;

// One message between plug-in and application: a name and an ordered list of parameters. The keys
// ignore case. Not thread-safe. Reading and writing take at most O(n log n), also for a hostile
// message.
class OrvaneMessage {
public:
    OrvaneMessage(const juce::String& tagName, const juce::String& name);
    OrvaneMessage(const OrvaneMessage&) = default;
    OrvaneMessage(OrvaneMessage&&) = default;
    OrvaneMessage& operator=(const OrvaneMessage&) = default;
    OrvaneMessage& operator=(OrvaneMessage&&) = default;
    virtual ~OrvaneMessage();

    // The name of the document's root element, fixed by the subclass.
    [[nodiscard]] const juce::String& getTagName() const { return tagName; }
    // The event's or command's name; a response has the name of the command that it answers.
    [[nodiscard]] const juce::String& getName() const { return name; }

    // Replaces the value of an existing key, which keeps its spelling and position, or appends a
    // new key.
    void setValue(const juce::String& key, const juce::String& value);
    // Empty when the key is absent.
    [[nodiscard]] juce::String getValue(const juce::String& key) const;

    // A list is written as the parameters prefix0, prefix1, …; reading appends to `list` and ends
    // at the first value that is empty or absent. True when `list` then has an entry.
    void addList(const juce::String& prefix, const juce::StringArray& list);
    bool getList(const juce::String& prefix, juce::StringArray& list) const;

    // A map is written as one parameter for each entry, named prefix.key. Reading takes what
    // follows the first "prefix." (case matters) in each name as the entry's key, ignoring case; a
    // later value replaces an earlier one, and new entries are appended in the order of their keys.
    // True when `map` then has an entry.
    void addMap(const juce::String& prefix, const juce::StringPairArray& map);
    bool getMap(const juce::String& prefix, juce::StringPairArray& map) const;

    // Appends the document in UTF-8 and a zero byte. The application depends on these exact bytes.
    void appendPayload(std::vector<std::uint8_t>& out) const;
    [[nodiscard]] std::vector<std::uint8_t> toPayload() const;
    // The document alone, as text.
    [[nodiscard]] juce::String toDocument() const;

    // Returns an OrvaneEvent, OrvaneCommand or OrvaneResponse; null when the payload is not XML
    // (logged) or its root element has another name. Reads up to the first zero byte; malformed
    // UTF-8 becomes U+FFFD. For any payload, memory is linear in its length; time too, plus n log n
    // for sorting its keys.
    static std::unique_ptr<OrvaneMessage> parsePayload(std::span<const std::uint8_t> payload);
    // The same from text, which may contain unpaired surrogates.
    static std::unique_ptr<OrvaneMessage> parse(const juce::String& text);

    [[nodiscard]] const std::vector<Parameter>& getParameters() const { return parameters.all(); }

private:
    static std::unique_ptr<OrvaneMessage> parseInPlace(std::string& looseUtf8);

    juce::String tagName;
    juce::String name;
    ParameterList parameters;
};

// Plug-in to application, on the event pipe.
class OrvaneEvent : public OrvaneMessage {
public:
    explicit OrvaneEvent(const juce::String& eventName);
};

// Application to plug-in, on the command pipe.
class OrvaneCommand : public OrvaneMessage {
public:
    explicit OrvaneCommand(const juce::String& commandName);

    // Calls the method of the command's name and returns the response. For an unknown command or an
    // exception, which is logged, the response's return value is false.
    OrvaneResponse executeCommand(IOrvanePluginMethods* pluginMethods) const;

    // The names of the commands that executeCommand() knows, sorted.
    [[nodiscard]] static std::vector<std::string_view> names();
};

// The answer to one command, on the command pipe.
class OrvaneResponse : public OrvaneMessage {
public:
    explicit OrvaneResponse(const juce::String& commandName);

    void setReturnValue(bool value);
    [[nodiscard]] bool getReturnValue() const;  // absent is false
};

}  // namespace orvane
