#pragma once

// Maps the fields of a metadata record to the player's attributes, and lists the fields that are
// read and written. Only constants: any thread may use them.

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

// The fields that are read from a track, in the order of its record.
inline constexpr std::array kLoaded{
    kTrackTitle, kAlbumTitle, kAlbumArtist, kTrackArtist, kTrackNumber, kGenre,
    kGenre2,     kYear,       kRelYear,     kBitRate,     kOvid,        kComposer,
    kLastPlayed, kPlayCount,  kComments,    kRating,      kPartOfSet,
};

// The fields that the application gets in a PlayStarted event.
inline constexpr std::array kReported{
    kTrackTitle, kTrackArtist, kAlbumTitle, kGenre, kYear, kTrackNumber,
};

// The fields that are written, in this order. Genre_2 has to follow Genre: both go to the same
// attribute, and the last one written stays.
inline constexpr std::array kSaved{
    kTrackTitle, kAlbumTitle, kAlbumArtist, kTrackArtist, kTrackNumber, kGenre,    kGenre2,
    kYear,       kRelYear,    kBitRate,     kOvid,        kDiskNumber,  kComposer, kComments,
};

// The player attribute to read for a field, ignoring case; empty when the field has none.
[[nodiscard]] juce::String attributeFor(const juce::String& field);

// The year is read from one attribute and written to another one, which needs a full date.
inline constexpr char kWrittenYearAttribute[] = "ReleaseDate";
[[nodiscard]] juce::String writtenYear(const juce::String& year);

// Splits "3/12" into the disc number and the number of discs. Without "/", all of the text is the
// disc number.
struct PartOfSet {
    juce::String diskNumber;
    juce::String disksInSet;
};
[[nodiscard]] PartOfSet splitPartOfSet(const juce::String& text);

}  // namespace orvane::fields
