#include "standins/app/protocol.h"

#include <algorithm>
#include <string_view>

namespace orvane::standin::app {
namespace {

// Reads a payload as a reader would that knows nothing of XML but the form that the plug-in
// promises, byte for byte: neither the system's own writer nor its parser has a part in it.
class FormReader {
public:
    explicit FormReader(std::string_view payload) : m_payload(payload) {}

    bool isWhole() {
        if (!take("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<")) return false;
        const std::string_view root = takeName();
        if (!take(" event=\"") || !takeEscaped(true) || !take("\"")) return false;
        if (take("/>\r\n")) return isAtEnd();
        if (!take(">\r\n")) return false;
        while (take("  <")) {
            const std::string_view key = takeName();
            if (!take(">") || !takeEscaped(false) || !take("</") || !take(key) || !take(">\r\n"))
                return false;
        }
        return take("</") && take(root) && take(">\r\n") && isAtEnd();
    }

    [[nodiscard]] String problem() const {
        String around;
        for (const char c : m_payload.substr(m_at - std::min<std::size_t>(m_at, 12), 32))
            around << String::charToString(static_cast<unsigned char>(c));
        return "the document leaves its form at byte " + String(static_cast<juce::int64>(m_at)) +
               ", near '" + onOneLine(around) + "'";
    }

private:
    bool take(std::string_view text) {
        if (!m_payload.substr(m_at).starts_with(text)) return false;
        m_at += text.size();
        return true;
    }
    std::string_view takeName() {
        const std::size_t end = std::min(m_payload.find_first_of(" >/", m_at), m_payload.size());
        const std::string_view name = m_payload.substr(m_at, end - m_at);
        m_at = end;
        return name;
    }
    // Stops at the end of a text or an attribute; false when a character is not escaped as it must
    // be.
    bool takeEscaped(bool attribute) {
        static constexpr std::string_view plain =
            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 "
            ".,;:-()_+=?!'#@[]/\\*%~{}"
            "\r\n";
        for (;;) {
            const std::size_t next = m_payload.find_first_not_of(
                attribute ? plain.substr(0, plain.size() - 2) : plain, m_at);
            m_at = std::min(next, m_payload.size());
            if (take(attribute ? "\"" : "<")) {
                --m_at;
                return true;
            }
            if (take("&amp;") || take("&quot;") || take("&gt;") || take("&lt;")) continue;
            if (!take("&#")) return false;
            const std::size_t end = m_payload.find_first_not_of("0123456789", m_at);
            if (end == m_at) return false;
            m_at = std::min(end, m_payload.size());
            if (!take(";")) return false;
        }
    }
    bool isAtEnd() { return take({"\0", 1}) && m_at == m_payload.size(); }

    std::string_view m_payload;
    std::size_t m_at = 0;
};

// Each event, and the parameters that it has after Player, in their order.
constexpr const char* kEvents[][2] = {
    {"PlayerHello", ""},
    {"PlayerGoodbye", ""},
    {"PlayerMoved", " PlayerRect"},
    {"PlayerMaximized", " PlayerRect"},
    {"PlayerMinimized", ""},
    {"PlayerHidden", ""},
    {"PlayerShown", ""},
    {"PlayerInSpecialMode", " inSpecialMode"},
    {"PlayerActivated", ""},
    {"PlayStarted", " TrackTitle TrackArtist AlbumTitle Genre_2 Filename Year TrackNumber"},
    {"PlayStopped", ""},
    {"CleanTracks", ""},
    {"MouseLButtonDown", ""},
};

String eventProblem(const OrvaneMessage& event) {
    for (const auto& [name, parameters] : kEvents) {
        if (event.getName() != name) continue;
        StringArray wanted = StringArray::fromTokens(String("Player") + parameters, false);
        StringArray keys;
        for (const auto& parameter : event.getParameters()) keys.add(parameter.key);
        if (event.getName() == "CleanTracks")
            for (int i = 0; i < keys.size() - 1; ++i) wanted.add("trackPaths" + String(i));
        if (keys == wanted) return {};
        return event.getName() + " has the parameters " + onOneLine(keys.joinIntoString(", ")) +
               "; it should have " + onOneLine(wanted.joinIntoString(", "));
    }
    return "there is no event '" + onOneLine(event.getName(), 60) + "'";
}

}  // namespace

const char* describe(PipeId pipe) { return pipe == PipeId::event ? "event pipe" : "command pipe"; }

const char* systemName(PipeId pipe) {
    return pipe == PipeId::event ? "IpcOrvaneEventPipe" : "IpcOrvaneCommandPipe";
}

MessagePtr readPayload(PipeId pipe, std::span<const std::uint8_t> payload, StringArray& problems) {
    FormReader form({reinterpret_cast<const char*>(payload.data()), payload.size()});
    if (!form.isWhole()) problems.add(form.problem());
    MessagePtr message = OrvaneMessage::parsePayload(payload);
    const char* const wanted = pipe == PipeId::event ? "OrVaneIPC" : "response";
    if (message == nullptr)
        problems.add("the document is no message");
    else if (message->getTagName() != wanted)
        problems.add(String("this pipe carries '") + wanted + "' documents, not '" +
                     message->getTagName() + "'");
    else if (pipe == PipeId::event)
        problems.add(eventProblem(*message));
    problems.removeEmptyStrings();
    return message;
}

std::optional<String> valueIn(const OrvaneMessage& message, const String& key) {
    for (const auto& parameter : message.getParameters())
        if (parameter.key.equalsIgnoreCase(key)) return parameter.value;
    return {};
}

}  // namespace orvane::standin::app
