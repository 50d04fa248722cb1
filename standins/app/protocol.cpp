#include "standins/app/protocol.h"

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

juce::String wide(const std::string& utf8) {
    return juce::String::fromUTF8(utf8.data(), static_cast<int>(utf8.size()));
}

std::string narrow(const juce::String& text) { return text.toStdString(); }

// The bytes around an offset, for a person who has to find the place.
std::string excerpt(std::string_view text, std::size_t offset) {
    constexpr std::size_t before = 12, all = 32;
    const std::size_t from = offset > before ? offset - before : 0;
    return " near '" + onOneLine(text.substr(std::min(from, text.size()), all)) + "'";
}

struct EventForm {
    const char* name;
    std::vector<const char*> parameters;  // after Player
};

const std::vector<EventForm>& eventForms() {
    static const std::vector<EventForm> forms = {
        {"PlayerHello", {}},
        {"PlayerGoodbye", {}},
        {"PlayerMoved", {"PlayerRect"}},
        {"PlayerMaximized", {"PlayerRect"}},
        {"PlayerMinimized", {}},
        {"PlayerHidden", {}},
        {"PlayerShown", {}},
        {"PlayerInSpecialMode", {"inSpecialMode"}},
        {"PlayerActivated", {}},
        {"PlayStarted",
         {"TrackTitle", "TrackArtist", "AlbumTitle", "Genre_2", "Filename", "Year", "TrackNumber"}},
        {"PlayStopped", {}},
        {"CleanTracks", {}},
        {"MouseLButtonDown", {}},
    };
    return forms;
}

void judgeEvent(const Message& event, std::vector<std::string>& problems) {
    const auto form = std::find_if(eventForms().begin(), eventForms().end(),
                                   [&](const EventForm& f) { return event.name == f.name; });
    if (form == eventForms().end()) {
        problems.push_back("there is no event '" + onOneLine(event.name, 60) + "'");
        return;
    }
    const auto need = [&](const char* key) {
        if (!find(event.parameters, key))
            problems.push_back(event.name + " came without its parameter " + key);
    };
    need("Player");
    for (const char* key : form->parameters) need(key);
}

// Why a text gave no message.
std::string diagnosis(std::string_view text) {
    if (trimmed(text).empty()) return "the document is empty";
    pugi::xml_document document;
    const pugi::xml_parse_result result =
        document.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!result) {
        const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0));
        return std::string("not XML: ") + result.description() + " at byte " +
               std::to_string(offset) + excerpt(text, offset);
    }
    const pugi::xml_node root = document.document_element();
    if (!root) return "the document has no root element";
    return "the root element is '" + onOneLine(root.name(), 60) +
           "'; it must be OrVaneIPC, command or response";
}

}  // namespace

std::string commandPayload(const std::string& name, const Parameters& parameters) {
    OrvaneCommand command(wide(name));
    for (const auto& [key, value] : parameters) command.setValue(wide(key), wide(value));
    const auto bytes = command.toPayload();
    return std::string(bytes.begin(), bytes.end());
}

Reading readPayload(PipeId pipe, std::string_view payload) {
    Reading reading;
    std::vector<std::string>& problems = reading.problems;
    const auto zero = payload.find('\0');
    const std::string_view text = payload.substr(0, zero);
    if (zero == std::string_view::npos)
        problems.emplace_back("the payload does not end in a zero byte");
    else if (zero + 1 < payload.size())
        problems.push_back("a zero byte at byte " + std::to_string(zero) + " ends the document; " +
                           std::to_string(payload.size() - zero - 1) + " bytes after it are lost");
    if (const auto bad = firstInvalidUtf8(text); bad != std::string_view::npos)
        problems.push_back("not UTF-8 at byte " + std::to_string(bad) + ": " +
                           hexBytes(text.substr(bad, 4)));

    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    const std::unique_ptr<OrvaneMessage> parsed = OrvaneMessage::parsePayload(bytes);
    if (!parsed) {
        problems.push_back(diagnosis(text));
        return reading;
    }
    Message message;
    message.kind = dynamic_cast<const OrvaneEvent*>(parsed.get())     ? Message::Kind::event
                   : dynamic_cast<const OrvaneCommand*>(parsed.get()) ? Message::Kind::command
                                                                      : Message::Kind::response;
    message.name = narrow(parsed->getName());
    for (const auto& parameter : parsed->getParameters())
        message.parameters.emplace_back(narrow(parameter.key), narrow(parameter.value));

    const Message::Kind wanted =
        pipe == PipeId::event ? Message::Kind::event : Message::Kind::response;
    if (message.name.empty()) problems.emplace_back("the root element has no 'event' attribute");
    if (message.kind != wanted)
        problems.push_back(std::string("this pipe carries ") +
                           (pipe == PipeId::event ? "events" : "responses") + ", not a " +
                           narrow(parsed->getTagName()));
    else if (message.kind == Message::Kind::event)
        judgeEvent(message, problems);
    reading.message = std::move(message);
    return reading;
}

}  // namespace orvane::standin::app
