#include "packaging/check/library_checks.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>

#include "packaging/check/child.h"
#include "standins/asf/asf_file.h"
#include "standins/asf/picture.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;
using standin::toUtf8;
using standin::toWide;

// The report's columns: four about the track, what was before and after the cleaning, where the
// cover art came from.
constexpr std::size_t kPath = 1, kVerdict = 2, kPlaylist = 3, kAfter = 15, kArtFrom = 26;
constexpr struct {
    std::size_t column;
    const char16_t* tag;
} kTags[] = {{kAfter, u"Title"},
             {kAfter + 1, u"Author"},
             {kAfter + 2, u"WM/AlbumArtist"},
             {kAfter + 3, u"WM/AlbumTitle"},
             {kAfter + 4, u"WM/Year"},
             {kAfter + 7, u"WM/Genre"}};
constexpr std::size_t kDisc = kAfter + 5, kDiscs = kAfter + 6;

std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '\t');) cells.push_back(cell);
    return cells;
}

std::uint64_t number64(const std::string& bytes, std::size_t at) {
    std::uint64_t number = 0;
    if (at + sizeof(number) <= bytes.size())
        std::memcpy(&number, bytes.data() + at, sizeof(number));
    return number;
}

// The coded audio alone, the same however the tags change: the packets of the object behind the
// header. Empty when the file is not as it should be.
std::string soundOf(const fs::path& track) {
    constexpr std::size_t kSizeAt = 16, kAhead = 50;
    const std::string bytes = contentOf(track);
    const std::uint64_t data = number64(bytes, kSizeAt);
    if (data == 0 || data + kAhead > bytes.size()) return {};
    const std::uint64_t size = number64(bytes, static_cast<std::size_t>(data) + kSizeAt);
    if (size < kAhead || size > bytes.size() - data) return {};
    return bytes.substr(static_cast<std::size_t>(data + kAhead),
                        static_cast<std::size_t>(size - kAhead));
}

// "NAME\tPATH" for each track of each playlist, from what the player printed.
std::set<std::string> playlistsIn(const std::string& printed) {
    std::set<std::string> filed;
    std::string name;
    std::istringstream lines(printed);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.starts_with("player: ")) line.erase(0, 8);
        const std::size_t colon = line.rfind(": ");
        if (line.starts_with("playlist ") && line.ends_with(" item(s)") &&
            colon != std::string::npos)
            name = line.substr(9, colon - 9);
        else if (line.starts_with("  "))
            filed.insert(name + "\t" + line.substr(2));
    }
    return filed;
}

// "" when the picture in the track is the image, byte for byte.
std::string checkPicture(const fs::path& track, const fs::path& image) {
    std::string error;
    const auto header = asf::readHeader(track, error);
    const auto* const attribute = header ? header->find(asf::kPictureName) : nullptr;
    const auto picture =
        attribute != nullptr ? asf::Picture::parse(attribute->value) : std::nullopt;
    if (!picture) return "has no picture";
    if (picture->mimeType != u"image/jpeg") return "has a picture of another type";
    const std::string wanted = contentOf(image);
    if (!std::equal(wanted.begin(), wanted.end(), picture->data.begin(), picture->data.end(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }))
        return "has another picture than " + toUtf8(image.filename().native());
    return {};
}

}  // namespace

std::string tagOf(const fs::path& track, std::u16string_view name) {
    std::string error;
    const auto header = asf::readHeader(track, error);
    const auto* const attribute = header ? header->find(name) : nullptr;
    if (attribute == nullptr) return "-";
    const std::u16string text = attribute->text();
    return toUtf8(std::wstring(text.begin(), text.end()));
}

void checkLibrary(const fs::path& report, const fs::path& music, const fs::path& originals,
                  const std::string& playerOutput, std::vector<Tick>& ticks,
                  std::string& problems) {
    bool tagsRight = true, coversRight = true, soundSame = true, untouched = true, filed = true;
    std::size_t count = 0, pictures = 0, notFound = 0;
    const auto problem = [&](bool& claim, const auto&... parts) {
        claim = false;
        (problems.append(parts), ...);
        problems += '\n';
    };
    const auto playlists = playlistsIn(playerOutput);
    std::istringstream lines(contentOf(report));
    for (std::string line; std::getline(lines, line);) {
        const auto cells = cellsOf(line);
        if (cells.size() <= kArtFrom || cells[0] == "index") continue;
        ++count;
        const fs::path name = fs::path(toWide(cells[kPath])).filename();
        const std::string shown = toUtf8(name.native());
        const fs::path track = music / name;
        if (!playlists.contains(cells[kPlaylist] + "\t" + cells[kPath]))
            problem(filed, shown, " is not in the playlist ", cells[kPlaylist]);
        const std::string sound = soundOf(track);
        if (sound.empty() || sound != soundOf(originals / name))
            problem(soundSame, shown, ": the audio data has changed");
        if (cells[kVerdict] == "not found") {
            ++notFound;
            if (contentOf(track) != contentOf(originals / name))
                problem(untouched, shown, " was not found, but its file has changed");
            continue;
        }
        const auto expectTag = [&](std::u16string_view tag, const std::string& wanted) {
            std::string is = tagOf(track, tag);
            if (is.ends_with('/')) is.pop_back();  // an empty count of discs
            if (is != wanted)
                problem(tagsRight, shown, ": a tag is '", is, "', not '", wanted, "'");
        };
        for (const auto& [column, tag] : kTags) expectTag(tag, cells[column]);
        expectTag(u"WM/PartOfSet",
                  cells[kDiscs] == "-" ? cells[kDisc] : cells[kDisc] + "/" + cells[kDiscs]);
        if (cells[kArtFrom] == "-") continue;
        ++pictures;
        if (const auto wrong = checkPicture(track, toWide(cells[kArtFrom])); !wrong.empty())
            problem(coversRight, shown, " ", wrong);
    }
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(originals)) ++files;
    // A library in which there was nothing to look at shows nothing.
    ticks.push_back({count == files && files > 0, "The report has every track of the library"});
    ticks.push_back({tagsRight && count > notFound, "The cleaned tags are in the files"});
    ticks.push_back({coversRight && pictures > 0, "Each cover is in its file, byte for byte"});
    ticks.push_back({soundSame && count > 0, "The audio data of every file is what it was"});
    ticks.push_back(
        {filed && count > 0, "The player's playlists have each track where it was filed"});
    ticks.push_back(
        {untouched && notFound > 0, "The files of tracks not found are what they were"});
}

}  // namespace orvane::check
