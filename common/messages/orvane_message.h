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

// One message of the link: a name and an ordered list of parameters whose keys ignore case.
// A value type without a lock. Lists and what came over the pipe cost time linear
// in their size or n log n, also with a whole library's paths in them.
class OrvaneMessage {
public:
    OrvaneMessage(const juce::String& tagName, const juce::String& name);
    OrvaneMessage(const OrvaneMessage&) = default;
    OrvaneMessage(OrvaneMessage&&) = default;
    OrvaneMessage& operator=(const OrvaneMessage&) = default;
    OrvaneMessage& operator=(OrvaneMessage&&) = default;
    virtual ~OrvaneMessage();

    // The root element's name: fixed by the subclass.
    [[nodiscard]] const juce::String& getTagName() const { return tagName; }
    // The event's or command's name; a response bears the name of the command it answers.
    [[nodiscard]] const juce::String& getName() const { return name; }

    // Replaces the value of an existing key, which keeps its spelling and place, or appends.
    void setValue(const juce::String& key, const juce::String& value);
    // Empty when the key is absent.
    [[nodiscard]] juce::String getValue(const juce::String& key) const;

    // A list travels as prefix0, prefix1, …; reading appends to `list` and ends at the first value
    // that is empty or absent. True when `list` then holds anything.
    void addList(const juce::String& prefix, const juce::StringArray& list);
    bool getList(const juce::String& prefix, juce::StringArray& list) const;

    // A map travels as prefix.key. Reading takes what follows the first "prefix." (case matters) in
    // each key and sets it in `map`, ignoring case. True when `map` then holds anything.
    void addMap(const juce::String& prefix, const juce::StringPairArray& map);
    bool getMap(const juce::String& prefix, juce::StringPairArray& map) const;

    // The document in UTF-8 and a zero byte, to the byte what the application expects; written
    // once, straight behind what `out` holds.
    void appendPayload(std::vector<std::uint8_t>& out) const;
    [[nodiscard]] std::vector<std::uint8_t> toPayload() const;
    // The same as a text.
    [[nodiscard]] juce::String toDocument() const;

    // An OrvaneEvent, OrvaneCommand or OrvaneResponse, or null: the payload is not XML (logged), or
    // its root is none of ours. Reads up to the first zero byte; malformed UTF-8 becomes U+FFFD.
    // Whatever the payload, memory is linear in its length, and time but for n log n of its keys.
    static std::unique_ptr<OrvaneMessage> parsePayload(std::span<const std::uint8_t> payload);
    // The same from a text, in which halves of surrogate pairs may stand alone.
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

    // Runs the operation that the command names and returns the answer. What the operation throws
    // is logged and answered with a return value of false.
    OrvaneResponse executeCommand(IOrvanePluginMethods* pluginMethods) const;

    // The commands that have an operation behind them, in the order of their names.
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
