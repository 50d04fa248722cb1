#include "media/field_table.h"

namespace orvane::fields {
namespace {

struct Row {
    const char* field;
    const char* attribute;
};

constexpr std::array kTable{
    Row{kTrackTitle, "Title"},
    Row{kAlbumTitle, "WM/AlbumTitle"},
    Row{kAlbumArtist, "WM/AlbumArtist"},
    Row{kTrackArtist, "Author"},
    Row{kTrackNumber, "WM/TrackNumber"},
    Row{kGenre, "WM/Genre"},
    Row{kGenre2, "WM/Genre"},
    Row{kYear, "ReleaseDateYear"},
    Row{kRelYear, "WM/OriginalReleaseYear"},
    Row{kBitRate, "Bitrate"},
    Row{kOvid, "WM/UniqueFileIdentifier"},
    Row{kComposer, "WM/Composer"},
    Row{kLastPlayed, "UserLastPlayedTime"},
    Row{kPlayCount, "UserPlayCount"},
    Row{kComments, "Description"},
    Row{kRating, "UserRating"},
    Row{kPartOfSet, "WM/PartOfSet"},
    Row{kDiskNumber, "WM/PartOfSet"},
};

}  // namespace

juce::String attributeFor(const juce::String& field) {
    for (const Row& row : kTable)
        if (field.equalsIgnoreCase(row.field)) return row.attribute;
    return {};
}

juce::String writtenYear(const juce::String& year) { return "1/1/" + year + " 04:20:00 PM"; }

PartOfSet splitPartOfSet(const juce::String& text) {
    const int slash = text.indexOfChar('/');
    if (slash < 0) return {text, {}};
    return {text.substring(0, slash), text.substring(slash + 1)};
}

}  // namespace orvane::fields
