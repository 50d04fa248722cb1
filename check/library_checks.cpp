#include "check/library_checks.h"

#include <algorithm>
#include <cstring>
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

std::string tagOf(const fs::path& track, std::u16string_view name) {
    std::string error;
    const auto header = asf::readHeader(track, error);
    const auto* const attribute = header ? header->find(name) : nullptr;
    if (attribute == nullptr) return "-";
    const std::u16string text = attribute->text();
    std::string tag = toUtf8(std::wstring(text.begin(), text.end()));
    if (tag.ends_with('/')) tag.pop_back();  // an empty count of discs
    return tag;
}

using Row = CleaningReport::value_type;
fs::path nameOf(const Row& row) { return fs::path(toWide(row.at("path"))).filename(); }

// As the application read them back.
Tags tagsOf(const Row& row) {
    const std::string& discs = row.at("after.DisksInSet");
    return {{u"Title", row.at("after.TrackTitle")},
            {u"Author", row.at("after.TrackArtist")},
            {u"WM/AlbumTitle", row.at("after.AlbumTitle")},
            {u"WM/AlbumArtist", row.at("after.AlbumArtist")},
            {u"WM/Year", row.at("after.Year")},
            {u"WM/Genre", row.at("after.Genre")},
            {u"WM/PartOfSet", row.at("after.DiskNumber") + (discs == "-" ? "" : "/" + discs)}};
}

// All behind the header: the same however the tags change. Empty when the file is not as it should
// be.
std::string soundOf(const fs::path& track) {
    constexpr std::size_t kSizeAt = 16;
    const std::string bytes = test::readText(track);
    std::uint64_t header = 0;
    if (bytes.size() < kSizeAt + sizeof(header)) return {};
    std::memcpy(&header, bytes.data() + kSizeAt, sizeof(header));
    return header < bytes.size() ? bytes.substr(static_cast<std::size_t>(header)) : "";
}

// Whether the player has printed that its playlist has the track.
bool isFiled(const std::string& printed, const std::string& playlist, const std::string& path) {
    const std::size_t begin = printed.find("playlist " + playlist + ": ");
    if (begin == printed.npos) return false;
    return printed.find("  " + path, begin) < printed.find("playlist ", begin + 1);
}

// The track's picture; empty when it has none of that type.
std::string pictureOf(const fs::path& track, std::u16string_view type) {
    std::string error;
    const auto header = asf::readHeader(track, error);
    const auto* const attribute = header ? header->find(asf::kPictureName) : nullptr;
    const auto picture =
        attribute != nullptr ? asf::Picture::parse(attribute->value) : std::nullopt;
    if (!picture || picture->mimeType != type) return {};
    return {picture->data.begin(), picture->data.end()};
}

}  // namespace

bool FileChecks::compared(const fs::path& track, const std::string& what, const std::string& wanted,
                          const std::string& is) {
    const std::string name = toUtf8(track.lexically_relative(m_folder).generic_wstring());
    expected += name + "\t" + what + "\t" + wanted + "\n";
    if (is == wanted) return true;
    problems += name + ": " + what + " is '" + is + "', not '" + wanted + "'\n";
    return false;
}

bool FileChecks::tagsAre(const fs::path& track, const Tags& tags) {
    bool right = true;
    for (const auto& [tag, wanted] : tags)
        right &= compared(track, std::string(tag.begin(), tag.end()), wanted, tagOf(track, tag));
    return right;
}

bool FileChecks::pictureIs(const fs::path& track, const fs::path& image) {
    const std::string wanted = toUtf8(image.filename().native());
    const bool same = pictureOf(track, u"image/jpeg") == test::readText(image);
    return compared(track, "picture", wanted, same ? wanted : "none, or another");
}

CleaningReport readReport(const fs::path& file) {
    std::istringstream lines(test::readText(file));
    std::string line;
    std::getline(lines, line);
    const auto headings = cellsOf(line);
    CleaningReport report;
    while (std::getline(lines, line)) {
        const auto cells = cellsOf(line);
        if (cells.size() != headings.size()) continue;  // it was cut short
        auto& row = report.emplace_back();
        for (std::size_t i = 0; i < cells.size(); ++i) row[headings[i]] = cells[i];
    }
    return report;
}

std::vector<Tick> checkLibrary(const CleaningReport& report, const fs::path& music,
                               const fs::path& originals, const std::string& playerOutput,
                               FileChecks& files) {
    bool tagsRight = true, coversRight = true, soundSame = true, untouched = true, filed = true;
    std::size_t pictures = 0, notFound = 0;
    for (const auto& row : report) {
        const fs::path track = music / nameOf(row), original = originals / nameOf(row);
        const auto claim = [&](bool& all, bool good, const std::string& what) {
            if (!good) files.problems += toUtf8(track.filename().native()) + what + "\n";
            all &= good;
        };
        const std::string& playlist = row.at("playlist");
        claim(filed, isFiled(playerOutput, playlist, row.at("path")),
              " is not in the playlist " + playlist);
        const std::string sound = soundOf(track);
        claim(soundSame, !sound.empty() && sound == soundOf(original),
              ": the audio data has changed");
        if (row.at("verdict") == "not found") {
            ++notFound;
            claim(untouched, test::readText(track) == test::readText(original),
                  " was not found, but its file has changed");
            continue;
        }
        tagsRight &= files.tagsAre(track, tagsOf(row));
        if (row.at("artFrom") == "-") continue;
        ++pictures;
        coversRight &= files.pictureIs(track, toWide(row.at("artFrom")));
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

void showLibrary(const CleaningReport& report, const fs::path& music, const fs::path& originals,
                 const Show& show) {
    show("\nThe library before and after, as the files have it");
    for (const auto& row : report) {
        const std::string& art = row.at("after.artType");
        show("  " + toUtf8(nameOf(row).native()) + "  ->  " + row.at("playlist") +
             (art == "-" ? "" : ", cover art " + art + ", " + row.at("after.artBytes") + " bytes"));
        for (const auto& [name, text] : tagsOf(row)) {
            std::string line(name.begin(), name.end());
            line.resize(16, ' ');
            const std::string before = tagOf(originals / nameOf(row), name);
            const std::string after = tagOf(music / nameOf(row), name);
            if (before != after || before != "-")
                show("      " + line + before + (before == after ? "" : "  ->  " + after));
        }
    }
    show("");
}

}  // namespace orvane::check
