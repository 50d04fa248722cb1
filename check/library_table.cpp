#include <cstdlib>

#include "check/library_checks.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWidths[] = {24, 36, 33, 15};

// How many columns of a terminal a text takes: East Asian characters take two, and so do emoji,
// which are two units of UTF-16 each.
std::size_t columnsOf(const std::wstring& text) {
    constexpr struct {
        wchar_t first, last;
    } kWide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},
                 {0xF900, 0xFAFF}, {0xFE30, 0xFE4F}, {0xFF00, 0xFF60}};
    std::size_t columns = text.size();
    for (const wchar_t c : text)
        for (const auto& [first, last] : kWide) columns += c >= first && c <= last ? 1 : 0;
    return columns;
}

// Cut or filled to `width` columns.
std::string cell(const std::string& utf8, std::size_t width) {
    std::wstring text = standin::toWide(utf8);
    if (columnsOf(text) > width) {
        while (columnsOf(text) > width - 2 || IS_HIGH_SURROGATE(text.back())) text.pop_back();
        text += L"..";
    }
    return standin::toUtf8(text) + std::string(width - columnsOf(text), ' ');
}

std::string row(const std::string (&cells)[5]) {
    std::string line = " ";
    for (std::size_t i = 0; i < std::size(kWidths); ++i) line += " " + cell(cells[i], kWidths[i]);
    line += " " + cells[4];
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

// The four lines below a track's title.
std::vector<std::string> linesOf(const fs::path& track) {
    return {"by " + tagOf(track, u"Author"), "on " + tagOf(track, u"WM/AlbumTitle"),
            "album by " + tagOf(track, u"WM/AlbumArtist"),
            tagOf(track, u"WM/Year") + ", disc " + tagOf(track, u"WM/PartOfSet") + ", " +
                tagOf(track, u"WM/Genre")};
}

std::string artOf(const ReportRow& row) {
    std::string art = "none";
    if (row.art != "-") {
        const unsigned long bytes = std::strtoul(row.artBytes.c_str(), nullptr, 10);
        art = row.art + ", " +
              (bytes < 10'000 ? row.artBytes + " bytes"
                              : std::to_string((bytes + 512) / 1024) + " KB");
    }
    return row.artBefore == "-" ? art : "was " + row.artBefore + "; " + art;
}

}  // namespace

void showTable(const std::vector<ReportRow>& report, const fs::path& music,
               const fs::path& originals, const Show& show) {
    show(row({"Track", "Before", "After", "Cover art", "Playlist"}));
    show("  " + std::string(130, '-'));
    for (const ReportRow& track : report) {
        const fs::path was = originals / track.name(), is = music / track.name();
        show(row({standin::toUtf8(track.name().native()), tagOf(was, u"Title"), tagOf(is, u"Title"),
                  artOf(track), track.playlist}));
        const auto before = linesOf(was), after = linesOf(is);
        for (std::size_t i = 0; i < before.size(); ++i)
            show(row({"", before[i], after[i], "", ""}));
    }
}

}  // namespace orvane::check
