// Writes vectors/ for application developers: what goes over the pipes, as bytes, one message a
// file, and index.json, which says what each holds. With --check it compares them with what is
// there, and reads the recorded session.
//
//   make_vectors [--check] docs/protocol.md devkit

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"

namespace {

using namespace orvane;
using juce::String;
namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;  // content by name

std::string contentOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// In plain ASCII. Each unit by itself: half a surrogate pair can be written as well.
std::string jsonText(const String& text) {
    std::string result = "\"";
    for (const auto* unit = text.getCharPointer().getAddress(); *unit != 0; ++unit) {
        const auto c = static_cast<unsigned>(static_cast<std::uint16_t>(*unit));
        if (c == '"' || c == '\\') result += '\\';
        char reference[8];
        std::snprintf(reference, sizeof reference, c >= ' ' && c <= '~' ? "%c" : "\\u%04x", c);
        result += reference;
    }
    return result + '"';
}

std::string asJson(const OrvaneMessage& message) {
    std::string text = "\"root\":" + jsonText(message.getTagName()) +
                       ",\"name\":" + jsonText(message.getName()) + ",\"parameters\":{";
    for (const auto& [key, value] : message.getParameters()) {
        if (text.back() != '{') text += ',';
        // As a reader of XML gets it.
        text += jsonText(key) + ":" + jsonText(value.replace("\r\n", "\n"));
    }
    return text + "}";
}

class Vectors {
public:
    void add(const std::string& file, const String& about, const OrvaneMessage& message) {
        const auto bytes = frame::encode(message.toPayload());
        m_files[file] = {bytes.begin(), bytes.end()};
        line("{\"file\":\"" + file + "\",\"about\":" + jsonText(about) + "," + asJson(message) +
             "}");
    }
    // A message too large for a file: how to make it, and what shows that it came out right.
    void addRecipe(const String& about, const OrvaneMessage& message) {
        std::uint32_t sum = 0;
        const auto bytes = frame::encode(message.toPayload());
        for (const std::uint8_t byte : bytes) sum = sum * 31 + byte;
        line("{\"recipe\":" + jsonText(about) + ",\"frameBytes\":" + std::to_string(bytes.size()) +
             ",\"sum31\":" + std::to_string(sum) + "}");
    }
    Files files() const {
        Files files = m_files;
        files["index.json"] = "[\n" + m_lines + "\n]\n";
        return files;
    }

private:
    void line(const std::string& text) { m_lines += (m_lines.empty() ? "" : ",\n") + text; }
    Files m_files;
    std::string m_lines;
};

// Every event, command and response: the page's examples, which its own test holds to the code.
void addPage(const std::string& page, Vectors& vectors) {
    const std::string_view fence = "\n```xml\n";
    for (auto at = page.find(fence); at != page.npos; at = page.find(fence, at)) {
        const auto heading = page.rfind("# `", at);
        const auto text = page.find("\n\n", heading) + 2;
        const String about =
            String::fromUTF8(page.substr(text, page.find("\n\n", text) - text).c_str());
        at += fence.size();
        const auto message = OrvaneMessage::parse(page.substr(at, page.find("```", at) - at));
        if (message == nullptr) continue;
        const std::string kind =
            message->getTagName() == "OrVaneIPC" ? "event" : message->getTagName().toStdString();
        vectors.add(kind + "-" + message->getName().toStdString() + ".bin",
                    about.replaceCharacter('\n', ' '), *message);
    }
}

OrvaneResponse record(const char* field, const String& value) {
    OrvaneResponse response("getCurrentMediaInfo");
    response.setReturnValue(true);
    response.setValue(String("metadataOut.") + field, value);
    return response;
}

void addOdd(Vectors& vectors) {
    const auto letters = [](juce::juce_wchar c) { return String::charToString(c); };
    vectors.add("odd-emoji.bin", "One character beyond U+FFFF comes as two references.",
                record("TrackTitle", "Song " + letters(0x1F3B5)));
    vectors.add("odd-half-pair.bin", "Half of a surrogate pair, alone: no Unicode text.",
                record("TrackTitle", stringOfUnits(u"a\xD83C")));
    vectors.add(
        "odd-no-characters.bin", "References to what XML 1.0 allows in no document.",
        record("TrackTitle", letters(1) + letters(0x1F) + letters(0xFFFE) + letters(0xFFFF)));
    vectors.add("odd-line-ends.bin", "CR LF comes raw, and is one line feed to a reader of XML.",
                record("Comments", "first\r\nsecond"));
    vectors.add("odd-tab.bin", "A tab comes as a reference.", record("Comments", "a\tb"));
    vectors.add("odd-spaces.bin", "White space at the ends belongs to the value.",
                record("TrackTitle", "  two before, one behind "));
    vectors.add("odd-signs.bin", "All of ASCII that can be printed.",
                record("Comments", "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"));
    vectors.add(
        "odd-languages.bin", "Letters beyond ASCII.",
        record("TrackTitle",
               String::fromUTF8("D\xC3\xA9j\xC3\xA0 vu \xE6\x97\xA5\xE6\x9C\xAC \xD7\xA2")));
    vectors.add("odd-empty-value.bin", "An empty value has its two tags.", record("Composer", ""));
    vectors.add("odd-no-parameter.bin",
                "A response without any parameter: setMediaInfoToPath had nothing to write.",
                OrvaneResponse("setMediaInfoToPath"));
    OrvaneResponse unknown("fly");
    unknown.setReturnValue(false);
    vectors.add("odd-unknown-command.bin", "The response to a command that is not known.", unknown);
    OrvaneEvent tracks("CleanTracks");
    tracks.setValue("Player", "wmp");
    vectors.add("odd-empty-list.bin", "An empty selection or playlist.", tracks);
    juce::StringArray paths;
    for (int i = 0; i < 10'000; ++i) paths.add("C:\\Music\\Track " + String(i) + ".wma");
    tracks.addList("trackPaths", paths);
    vectors.addRecipe(
        "event CleanTracks: Player wmp, then 10,000 paths, the one at i is C:\\Music\\Track i.wma",
        tracks);
    OrvaneCommand start("start");
    start.setValue("trackPath", "");
    const auto fixed = start.toPayload().size();
    start.setValue("trackPath",
                   String::repeatedString("a", static_cast<int>(frame::kPayloadLimit - 1 - fixed)));
    vectors.addRecipe("command start, the largest frame: its trackPath is the letter a, " +
                          String(static_cast<int>(frame::kPayloadLimit - 1 - fixed)) + " times",
                      start);
}

// Every frame of the recorded session is read, and written again the same.
bool sessionIsWhole(const fs::path& folder) {
    std::size_t frames = 0, bad = 0;
    for (const char* const file : {"event-pipe.bin", "command-pipe.bin"}) {
        const std::string bytes = contentOf(folder / file);
        frame::Reader reader;
        for (std::size_t at = 0; at < bytes.size();) {
            const auto room = reader.room();
            const auto count = std::min(room.size(), bytes.size() - at);
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), count, room.begin());
            at += count;
            if (!reader.advance(count)) continue;
            ++frames;
            const auto payload = reader.payload();
            const auto message = OrvaneMessage::parsePayload(payload);
            if (message == nullptr || !std::ranges::equal(message->toPayload(), payload)) ++bad;
        }
    }
    std::printf("the session has %zu frames, %zu of them are not as the code writes them\n", frames,
                bad);
    return frames > 0 && bad == 0;
}

int check(const Files& files, const fs::path& folder) {
    int differences = 0;
    for (const auto& [name, content] : files) {
        if (contentOf(folder / name) == content) continue;
        std::printf("%s is not what the code writes: make_vectors writes it anew\n", name.c_str());
        ++differences;
    }
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (files.contains(entry.path().filename().string())) continue;
        std::printf("%s belongs to nothing\n", entry.path().filename().string().c_str());
        ++differences;
    }
    std::printf("%zu files, %d differences\n", files.size(), differences);
    return differences;
}

}  // namespace

int main(int argc, char** argv) try {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool checks = !arguments.empty() && arguments[0] == "--check";
    const std::string page = arguments.size() < 2 ? "" : contentOf(arguments[arguments.size() - 2]);
    if (arguments.size() != (checks ? 3U : 2U) || page.empty()) {
        std::puts("usage: make_vectors [--check] docs/protocol.md devkit");
        return 2;
    }
    Vectors vectors;
    addPage(page, vectors);
    addOdd(vectors);
    const Files files = vectors.files();
    const fs::path kit = arguments.back(), folder = kit / "vectors";
    if (checks) return check(files, folder) == 0 && sessionIsWhole(kit / "session") ? 0 : 1;
    fs::create_directories(folder);
    for (const auto& [name, content] : files)
        std::ofstream(folder / name, std::ios::binary) << content;
    std::printf("%zu files written\n", files.size());
    return 0;
} catch (const std::exception& e) {
    std::printf("error: %s\n", e.what());
    return 1;
}
