#include "common/messages/orvane_message.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/messages/text_coding.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// White space is kept here because a run of text may be cut into pieces by comments; it is trimmed
// from whole runs. Entities of a document's own are never expanded. A fragment shows what stands
// beside the root; otherwise pugixml drops it without a word.
constexpr unsigned kParseOptions = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol |
                                   pugi::parse_ws_pcdata | pugi::parse_fragment;

bool isSpace(std::uint16_t unit) {
    return juce::CharacterFunctions::isWhitespace(static_cast<juce::juce_wchar>(unit));
}

bool isPlainEnd(char byte) { return byte > ' ' && byte < 0x7F; }

// A run in loose UTF-8 without the white space at its ends.
juce::String trimmed(std::string_view run) {
    while (!run.empty() && run.front() > 0 && isSpace(static_cast<std::uint16_t>(run.front())))
        run.remove_prefix(1);
    while (!run.empty() && run.back() > 0 && isSpace(static_cast<std::uint16_t>(run.back())))
        run.remove_suffix(1);
    if (run.empty()) return {};
    juce::String text = fromLooseUtf8(run);
    if (isPlainEnd(run.front()) && isPlainEnd(run.back())) return text;
    // White space beyond ASCII.
    const StringUnit* const units = unitsOf(text);
    const StringUnit* begin = units;
    const StringUnit* end = units;
    while (*end != 0) ++end;
    const StringUnit* const last = end;
    while (begin != end && isSpace(static_cast<std::uint16_t>(*begin))) ++begin;
    while (end != begin && isSpace(static_cast<std::uint16_t>(end[-1]))) --end;
    if (begin == units && end == last) return text;
    return stringOfUnits(
        {reinterpret_cast<const char16_t*>(begin), static_cast<std::size_t>(end - begin)});
}

// The element's own text: its runs, each trimmed, one after the other. A run is what stands between
// two tags; comments and processing instructions in it do not end it.
juce::String directText(const pugi::xml_node& element) {
    const pugi::xml_node only = element.first_child();
    if (!only) return {};
    if (!only.next_sibling())
        return only.type() == pugi::node_element ? juce::String() : trimmed(only.value());

    // Not a juce::String: appending to one looks for its end each time, and a hostile element has
    // millions of runs.
    std::u16string text;
    std::string run;
    const auto endRun = [&] {
        const juce::String piece = trimmed(run);
        for (const StringUnit* unit = unitsOf(piece); *unit != 0; ++unit)
            text += static_cast<char16_t>(*unit);
        run.clear();
    };
    for (pugi::xml_node child = only; child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element)
            endRun();
        else
            run += child.value();
    }
    endRun();
    return stringOfUnits(text);
}

// Why these nodes are no well-formed document; null when they are one: a single root, and no text
// beside it.
const char* documentError(const pugi::xml_document& document) {
    int roots = 0;
    for (const pugi::xml_node& node : document.children()) {
        const std::string_view text = node.value();
        if (node.type() == pugi::node_element && ++roots > 1) return "More than one root element";
        if (node.type() == pugi::node_cdata ||
            (node.type() == pugi::node_pcdata && text.find_first_not_of(" \t\r\n") != text.npos))
            return "Text outside the root element";
    }
    return roots == 0 ? "No document element found" : nullptr;
}

juce::String eventAttribute(const pugi::xml_node& root) {
    for (pugi::xml_attribute a = root.first_attribute(); a; a = a.next_attribute()) {
        if (fromLooseUtf8(a.name()).equalsIgnoreCase("event")) return fromLooseUtf8(a.value());
    }
    return {};
}

// Short names that come again share one string. Elements can be two million where their names are
// that short, and then strings of their own would be most of what a payload costs.
class ElementNames {
public:
    explicit ElementNames(std::size_t elements) {
        if (elements > kMany) m_recent.resize(kLongest * kSlots);
    }

    juce::String nameOf(const pugi::xml_node& element) {
        const std::string_view name = element.name();
        if (m_recent.empty() || name.empty() || name.size() > kLongest) return fromLooseUtf8(name);
        const std::size_t slot = static_cast<std::uint8_t>(name.back()) % kSlots;
        Recent& recent = m_recent[(name.size() - 1) * kSlots + slot];
        if (recent.bytes != name) recent = {name, fromLooseUtf8(name)};
        return recent.text;
    }

private:
    static constexpr std::size_t kMany = 10'000;
    static constexpr std::size_t kLongest = 6;  // bytes
    static constexpr std::size_t kSlots = 128;
    struct Recent {
        std::string_view bytes;  // in the document
        juce::String text;
    };
    std::vector<Recent> m_recent;  // by length, then by the last byte
};

std::unique_ptr<OrvaneMessage> messageForRoot(const pugi::xml_node& root) {
    const std::string_view tag = root.name();
    if (tag == "OrVaneIPC") return std::make_unique<OrvaneEvent>(eventAttribute(root));
    if (tag == "command") return std::make_unique<OrvaneCommand>(eventAttribute(root));
    if (tag == "response") return std::make_unique<OrvaneResponse>(eventAttribute(root));
    return nullptr;
}

}  // namespace

std::unique_ptr<OrvaneMessage> OrvaneMessage::parsePayload(std::span<const std::uint8_t> payload) {
    std::string text = validUtf8(payload);
    return parseInPlace(text);
}

std::unique_ptr<OrvaneMessage> OrvaneMessage::parse(const juce::String& text) {
    std::string bytes;
    appendLooseUtf8(text, bytes);
    return parseInPlace(bytes);
}

// The document's names and values point into the bytes.
std::unique_ptr<OrvaneMessage> OrvaneMessage::parseInPlace(std::string& looseUtf8) {
    std::unique_ptr<OrvaneMessage> message;
    std::vector<Parameter> set;
    {
        pugi::xml_document document;
        // With its terminator: the parser overwrites the last byte that it is given, and of a text
        // outside the root that byte may be all there is.
        const pugi::xml_parse_result result = document.load_buffer_inplace(
            looseUtf8.data(), looseUtf8.size() + 1, kParseOptions, pugi::encoding_utf8);
        const char* const error = result ? documentError(document) : result.description();
        if (error != nullptr) {
            syslog(LOG_ERR, "OrvaneMessage: XML parsing error occured: %s", error);
            return nullptr;
        }
        const pugi::xml_node root = document.document_element();
        message = messageForRoot(root);
        if (message == nullptr) return nullptr;

        // Counted first: a vector that grows holds its entries twice for a while.
        const auto isElement = [](const pugi::xml_node& node) {
            return node.type() == pugi::node_element;
        };
        const auto inRoot = root.children();
        const auto count =
            static_cast<std::size_t>(std::count_if(inRoot.begin(), inRoot.end(), isElement));
        set.reserve(count);
        ElementNames names(count);
        for (const pugi::xml_node& child : inRoot)
            if (isElement(child)) set.push_back({names.nameOf(child), directText(child)});
    }
    message->parameters = ParameterList(std::move(set));
    return message;
}

}  // namespace orvane
