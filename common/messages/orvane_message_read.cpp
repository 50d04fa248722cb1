#include "common/messages/orvane_message.h"

#include <pugixml.hpp>

#include <string>
#include <string_view>

#include "common/messages/text_coding.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// White space is kept here because a run of text may be cut into pieces by comments; it is trimmed
// from whole runs. Entities of a document's own are never expanded.
constexpr unsigned parseOptions =
    pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol | pugi::parse_ws_pcdata;

void appendTrimmed(const juce::String& run, std::u16string& out) {
    const auto isSpace = [](auto unit) {
        return juce::CharacterFunctions::isWhitespace(
            static_cast<juce::juce_wchar>(static_cast<std::uint16_t>(unit)));
    };
    const auto* begin = run.getCharPointer().getAddress();
    const auto* end = begin;
    while (*end != 0) ++end;
    while (begin != end && isSpace(*begin)) ++begin;
    while (end != begin && isSpace(end[-1])) --end;
    out.append(begin, end);
}

// The element's own text: its runs, each trimmed, one after the other. A run is what stands between
// two tags; comments and processing instructions in it do not end it.
juce::String directText(const pugi::xml_node& element) {
    // Not a juce::String: appending to one looks for its end each time, and a hostile element has
    // millions of runs.
    std::u16string text;
    std::string run;
    const auto endRun = [&] {
        if (run.empty()) return;
        appendTrimmed(fromLooseUtf8(run), text);
        run.clear();
    };
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element)
            endRun();
        else
            run += child.value();
    }
    endRun();
    return stringOfUnits(text);
}

juce::String eventAttribute(const pugi::xml_node& root) {
    for (pugi::xml_attribute a = root.first_attribute(); a; a = a.next_attribute()) {
        if (fromLooseUtf8(a.name()).equalsIgnoreCase("event")) return fromLooseUtf8(a.value());
    }
    return {};
}

std::unique_ptr<OrvaneMessage> messageForRoot(const pugi::xml_node& root) {
    const std::string_view tag = root.name();
    if (tag == "OrVaneIPC") return std::make_unique<OrvaneEvent>(eventAttribute(root));
    if (tag == "command") return std::make_unique<OrvaneCommand>(eventAttribute(root));
    if (tag == "response") return std::make_unique<OrvaneResponse>(eventAttribute(root));
    return nullptr;
}

}  // namespace

std::unique_ptr<OrvaneMessage> OrvaneMessage::parse(const juce::String& text) {
    // Parsed in place: the document's names and values point into these bytes.
    std::string bytes;
    appendLooseUtf8(text, bytes);
    pugi::xml_document document;
    const pugi::xml_parse_result result =
        document.load_buffer_inplace(bytes.data(), bytes.size(), parseOptions, pugi::encoding_utf8);
    if (!result) {
        syslog(LOG_ERR, "OrvaneMessage: XML parsing error occured: %s", result.description());
        return nullptr;
    }

    const pugi::xml_node root = document.document_element();
    auto message = messageForRoot(root);
    if (message == nullptr) return nullptr;
    for (pugi::xml_node child = root.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element)
            message->setValue(fromLooseUtf8(child.name()), directText(child));
    }
    return message;
}

}  // namespace orvane
