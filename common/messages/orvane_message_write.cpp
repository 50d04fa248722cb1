#include "common/messages/orvane_message.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/messages/text_coding.h"

namespace orvane {
namespace {

constexpr std::array<bool, 128> makePlainTable() {
    std::array<bool, 128> plain{};
    for (const unsigned char c :
         std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                          " .,;:-()_+=?!'#@[]/\\*%~{}"))
        plain[c] = true;
    return plain;
}

constexpr auto plainTable = makePlainTable();

enum class Place { attribute, text };

// Builds the text unit by unit; the application compares documents byte by byte in places, so
// nothing here may be left to a library's idea of pretty.
class Writer {
public:
    void ascii(std::string_view text) { m_out.append(text.begin(), text.end()); }

    void raw(const juce::String& text) {
        for (const auto* unit = begin(text); *unit != 0; ++unit)
            m_out += static_cast<char16_t>(*unit);
    }

    void escaped(const juce::String& text, Place place) {
        for (const auto* unit = begin(text); *unit != 0; ++unit)
            escape(static_cast<std::uint16_t>(*unit), place);
    }

    [[nodiscard]] juce::String take() const { return stringOfUnits(m_out); }

private:
    static const juce::String::CharPointerType::CharType* begin(const juce::String& text) {
        return text.getCharPointer().getAddress();
    }

    void escape(std::uint16_t unit, Place place) {
        const bool lineEnd = unit == '\n' || unit == '\r';
        if ((unit < plainTable.size() && plainTable[unit]) || (lineEnd && place == Place::text))
            m_out += static_cast<char16_t>(unit);
        else if (unit == '&')
            ascii("&amp;");
        else if (unit == '"')
            ascii("&quot;");
        else if (unit == '>')
            ascii("&gt;");
        else if (unit == '<')
            ascii("&lt;");
        else
            ascii("&#" + std::to_string(unit) + ";");
    }

    std::u16string m_out;
};

}  // namespace

juce::String OrvaneMessage::toDocument() const {
    Writer writer;
    writer.ascii("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<");
    writer.raw(tagName);
    writer.ascii(" event=\"");
    writer.escaped(name, Place::attribute);
    if (parameters.empty()) {
        writer.ascii("\"/>\r\n");
        return writer.take();
    }
    writer.ascii("\">\r\n");
    for (const auto& [key, value] : parameters) {
        writer.ascii("  <");
        writer.raw(key);
        writer.ascii(">");
        writer.escaped(value, Place::text);
        writer.ascii("</");
        writer.raw(key);
        writer.ascii(">\r\n");
    }
    writer.ascii("</");
    writer.raw(tagName);
    writer.ascii(">\r\n");
    return writer.take();
}

}  // namespace orvane
