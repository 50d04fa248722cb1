#pragma once

// Which player attribute stands for which field of a metadata record, and which fields travel in
// which direction. Constants of the program: there is nothing to build, so nothing to race for.

#include <juce_core/juce_core.h>

#include <array>

namespace orvane::fields {

inline constexpr char kFilename[] = "Filename";
inline constexpr char kTrackTitle[] = "TrackTitle";
inline constexpr char kAlbumTitle[] = "AlbumTitle";
inline constexpr char kAlbumArtist[] = "AlbumArtist";
inline constexpr char kTrackArtist[] = "TrackArtist";
inline constexpr char kTrackNumber[] = "TrackNumber";
inline constexpr char kGenre[] = "Genre";
inline constexpr char kGenre2[] = "Genre_2";
inline constexpr char kYear[] = "Year";
inline constexpr char kRelYear[] = "RelYear";
inline constexpr char kBitRate[] = "BitRate";
inline constexpr char kOvid[] = "OVID";
inline constexpr char kComposer[] = "Composer";
inline constexpr char kLastPlayed[] = "LastPlayed";
inline constexpr char kPlayCount[] = "PlayCount";
inline constexpr char kComments[] = "Comments";
inline constexpr char kRating[] = "Rating";
inline constexpr char kPartOfSet[] = "PartOfSet";
inline constexpr char kDiskNumber[] = "DiskNumber";
inline constexpr char kDisksInSet[] = "DisksInSet";
inline constexpr char kAlbumArt[] = "AlbumArt";

// In the order of the record that a loaded track has.
inline constexpr std::array kLoaded{
    kTrackTitle, kAlbumTitle, kAlbumArtist, kTrackArtist, kTrackNumber, kGenre,
    kGenre2,     kYear,       kRelYear,     kBitRate,     kOvid,        kComposer,
    kLastPlayed, kPlayCount,  kComments,    kRating,      kPartOfSet,
};

// What the application hears of a track that starts.
inline constexpr std::array kReported{
    kTrackTitle, kTrackArtist, kAlbumTitle, kGenre, kYear, kTrackNumber,
};

// In the order in which they are written. Genre_2 has to follow Genre: both go to one attribute,
// and the second is the one that stays.
inline constexpr std::array kSaved{
    kTrackTitle, kAlbumTitle, kAlbumArtist, kTrackArtist, kTrackNumber, kGenre,    kGenre2,
    kYear,       kRelYear,    kBitRate,     kOvid,        kDiskNumber,  kComposer, kComments,
};

// The player attribute to read for a field, ignoring case; empty for a field that has none.
[[nodiscard]] juce::String attributeFor(const juce::String& field);

// The year is read from one attribute and written to another, which wants a whole date.
inline constexpr char kWrittenYearAttribute[] = "ReleaseDate";
[[nodiscard]] juce::String writtenYear(const juce::String& year);

// "3/12" as disc number and number of discs; all of it is the number when there is no "/".
struct PartOfSet {
    juce::String diskNumber;
    juce::String disksInSet;
};
[[nodiscard]] PartOfSet splitPartOfSet(const juce::String& text);

}  // namespace orvane::fields
