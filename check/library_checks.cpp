#include "check/library_checks.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>

#include "harness/files.h"
#include "standins/asf/asf_file.h"
#include "standins/asf/picture.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;
using standin::toUtf8;
using standin::toWide;

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
    const std::string bytes = test::readText(track);
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
std::string wrongPicture(const fs::path& track, const fs::path& image) {
    std::string error;
    const auto header = asf::readHeader(track, error);
    const auto* const attribute = header ? header->find(asf::kPictureName) : nullptr;
    const auto picture =
        attribute != nullptr ? asf::Picture::parse(attribute->value) : std::nullopt;
    if (!picture) return "has no picture";
    if (picture->mimeType != u"image/jpeg") return "has a picture of another type";
    const std::string wanted = test::readText(image);
    if (!std::equal(wanted.begin(), wanted.end(), picture->data.begin(), picture->data.end(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }))
        return "has another picture than " + toUtf8(image.filename().native());
    return {};
}

}  // namespace

fs::path ReportRow::name() const { return fs::path(toWide(path)).filename(); }

std::string tagOf(const fs::path& track, std::u16string_view name) {
    std::string error;
    const auto header = asf::readHeader(track, error);
    const auto* const attribute = header ? header->find(name) : nullptr;
    if (attribute == nullptr) return "-";
    const std::u16string text = attribute->text();
    return toUtf8(std::wstring(text.begin(), text.end()));
}

bool FileChecks::tagsAre(const fs::path& track, const std::vector<Tag>& tags) {
    bool right = true;
    for (const auto& [tag, wanted] : tags) {
        std::string is = tagOf(track, tag);
        if (is.ends_with('/')) is.pop_back();  // an empty count of discs
        note(track, std::string(tag.begin(), tag.end()), wanted);
        if (is == wanted) continue;
        right = false;
        problems +=
            toUtf8(track.filename().native()) + ": a tag is '" + is + "', not '" + wanted + "'\n";
    }
    return right;
}

bool FileChecks::pictureIs(const fs::path& track, const fs::path& image) {
    note(track, "picture", toUtf8(image.filename().native()));
    const std::string wrong = wrongPicture(track, image);
    if (!wrong.empty()) problems += toUtf8(track.filename().native()) + " " + wrong + "\n";
    return wrong.empty();
}

void FileChecks::note(const fs::path& track, const std::string& what, const std::string& wanted) {
    expected += toUtf8(track.lexically_relative(m_folder).generic_wstring()) + "\t" + what + "\t" +
                wanted + "\n";
}

std::vector<ReportRow> readReport(const fs::path& report) {
    // The columns: four about the track, what was before and after the cleaning, where the cover
    // art came from.
    constexpr std::size_t kAfter = 15, kArtFrom = 26;
    std::vector<ReportRow> rows;
    std::istringstream lines(test::readText(report));
    for (std::string line; std::getline(lines, line);) {
        const auto cells = cellsOf(line);
        if (cells.size() <= kArtFrom || cells[0] == "index") continue;
        const auto after = [&](std::size_t column) { return cells[kAfter + column]; };
        rows.push_back(
            {.path = cells[1],
             .verdict = cells[2],
             .playlist = cells[3],
             .tags = {{u"Title", after(0)},
                      {u"Author", after(1)},
                      {u"WM/AlbumTitle", after(3)},
                      {u"WM/AlbumArtist", after(2)},
                      {u"WM/Year", after(4)},
                      {u"WM/PartOfSet", after(6) == "-" ? after(5) : after(5) + "/" + after(6)},
                      {u"WM/Genre", after(7)}},
             .artBefore = cells[kAfter - 2],
             .art = after(9),
             .artBytes = after(10),
             .artFrom = cells[kArtFrom]});
    }
    return rows;
}

std::vector<Tick> checkLibrary(const std::vector<ReportRow>& report, const fs::path& music,
                               const fs::path& originals, const std::string& playerOutput,
                               FileChecks& files) {
    bool tagsRight = true, coversRight = true, soundSame = true, untouched = true, filed = true;
    std::size_t pictures = 0, notFound = 0;
    const auto playlists = playlistsIn(playerOutput);
    for (const ReportRow& row : report) {
        const fs::path name = row.name();
        const fs::path track = music / name;
        const auto problem = [&](bool& claim, const std::string& what) {
            claim = false;
            files.problems += toUtf8(name.native()) + what + "\n";
        };
        if (!playlists.contains(row.playlist + "\t" + row.path))
            problem(filed, " is not in the playlist " + row.playlist);
        const std::string sound = soundOf(track);
        if (sound.empty() || sound != soundOf(originals / name))
            problem(soundSame, ": the audio data has changed");
        if (row.verdict == "not found") {
            ++notFound;
            if (test::readText(track) != test::readText(originals / name))
                problem(untouched, " was not found, but its file has changed");
            continue;
        }
        tagsRight = files.tagsAre(track, row.tags) && tagsRight;
        if (row.artFrom == "-") continue;
        ++pictures;
        coversRight = files.pictureIs(track, toWide(row.artFrom)) && coversRight;
    }
    const auto tracks = static_cast<std::size_t>(
        std::distance(fs::directory_iterator(originals), fs::directory_iterator()));
    const std::size_t count = report.size();
    // A library in which there was nothing to look at shows nothing.
    return {{count == tracks && tracks > 0, "The report has every track of the library"},
            {tagsRight && count > notFound, "The cleaned tags are in the files"},
            {coversRight && pictures > 0, "Each cover is in its file, byte for byte"},
            {soundSame && count > 0, "The audio data of every file is what it was"},
            {filed && count > 0, "The player's playlists have each track where it was filed"},
            {untouched && notFound > 0, "The files of tracks not found are what they were"}};
}

}  // namespace orvane::check
