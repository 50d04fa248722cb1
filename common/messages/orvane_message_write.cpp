#include "common/messages/orvane_message.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "common/messages/frame.h"
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

constexpr auto kPlain = makePlainTable();

// The application compares documents byte by byte in places, so nothing here is left to a library's
// idea of pretty.
enum class Place { attribute, text };

// Writes bytes behind those of a vector, whose size is only put right at the end: room for the
// longest form of each piece is made before it.
class Writer {
public:
    explicit Writer(std::vector<std::uint8_t>& out) : m_out(out), m_used(out.size()) {}
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { m_out.resize(m_used); }

    void ascii(std::string_view text) {
        room(text.size());
        std::memcpy(m_out.data() + m_used, text.data(), text.size());
        m_used += text.size();
    }

    // Element names: as they are.
    void raw(const juce::String& text) {
        const StringUnit* const units = unitsOf(text);
        std::size_t plain = 0;
        while (units[plain] > 0 && units[plain] < 0x80) ++plain;
        if (units[plain] != 0) {
            m_out.resize(m_used);
            appendUtf8(text, m_out);
            m_used = m_out.size();
            return;
        }
        room(plain);
        for (std::size_t i = 0; i < plain; ++i)
            m_out[m_used + i] = static_cast<std::uint8_t>(units[i]);
        m_used += plain;
    }

    void escaped(const juce::String& text, Place place) {
        const StringUnit* units = unitsOf(text);
        while (*units != 0) {
            room(kStep);
            std::uint8_t* at = m_out.data() + m_used;
            for (std::size_t i = 0; i < kStep / kLongestUnit && *units != 0; ++i, ++units) {
                const auto unit = static_cast<std::uint16_t>(*units);
                if (unit < kPlain.size() && kPlain[unit])
                    *at++ = static_cast<std::uint8_t>(unit);
                else
                    at = escape(unit, place, at);
            }
            m_used = static_cast<std::size_t>(at - m_out.data());
        }
    }

private:
    static constexpr std::size_t kLongestUnit = 8;  // "&#65535;"

    // In steps that stay in the processor's cache until they are written to.
    static constexpr std::size_t kStep = 8'192;

    void room(std::size_t count) {
        if (m_out.size() - m_used < count) m_out.resize(m_used + std::max(count, 4 * kStep));
    }

    static std::uint8_t* escape(std::uint16_t unit, Place place, std::uint8_t* at) {
        const auto put = [&at](std::string_view text) {
            at = std::copy(text.begin(), text.end(), at);
            return at;
        };
        if ((unit == '\n' || unit == '\r') && place == Place::text) {
            *at++ = static_cast<std::uint8_t>(unit);
            return at;
        }
        if (unit == '&') return put("&amp;");
        if (unit == '"') return put("&quot;");
        if (unit == '>') return put("&gt;");
        if (unit == '<') return put("&lt;");
        char reference[kLongestUnit] = {'&', '#'};
        char* const end = std::to_chars(reference + 2, reference + 7, unit).ptr;
        *end = ';';
        return put({reference, static_cast<std::size_t>(end + 1 - reference)});
    }

    std::vector<std::uint8_t>& m_out;
    std::size_t m_used;
};

}  // namespace

void OrvaneMessage::appendPayload(std::vector<std::uint8_t>& out) const {
    // A list's values are much alike: the first few tell what the rest will take, if they tell the
    // truth.
    const std::vector<Parameter>& all = getParameters();
    constexpr std::size_t looked = 32;
    if (all.size() > looked) {
        std::size_t units = 0;
        for (std::size_t i = 0; i < looked; ++i)
            units += 2 * lengthOf(unitsOf(all[i].key)) + lengthOf(unitsOf(all[i].value));
        const std::size_t likely = (units / looked + 24) * all.size() / 8 * 9;
        out.reserve(out.size() + std::min(likely, frame::kPayloadLimit));
    }

    Writer writer(out);
    writer.ascii("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<");
    writer.raw(tagName);
    writer.ascii(" event=\"");
    writer.escaped(name, Place::attribute);
    if (all.empty()) {
        writer.ascii(std::string_view("\"/>\r\n\0", 6));
        return;
    }
    writer.ascii("\">\r\n");
    for (const auto& [key, value] : all) {
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
    writer.ascii(std::string_view(">\r\n\0", 4));
}

std::vector<std::uint8_t> OrvaneMessage::toPayload() const {
    std::vector<std::uint8_t> payload;
    appendPayload(payload);
    return payload;
}

juce::String OrvaneMessage::toDocument() const {
    const std::vector<std::uint8_t> payload = toPayload();
    return fromLooseUtf8({reinterpret_cast<const char*>(payload.data()), payload.size() - 1});
}

}  // namespace orvane
