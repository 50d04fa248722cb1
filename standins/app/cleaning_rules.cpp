#include "standins/app/cleaning_rules.h"

#include <algorithm>

namespace orvane::standin::app {
namespace {

// Letters of ASCII and Latin-1; other characters are treated as having no case.
bool isUpper(juce::juce_wchar c) {
    return (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
}
bool isLower(juce::juce_wchar c) {
    return (c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7);
}

bool isSmallWord(const String& word) {
    static const StringArray words =
        StringArray::fromTokens("a an and at de in la of on or the to", false);
    return words.contains(word, true);
}

// True when a word begins with a lower-case letter and is not one of the small words, or when all
// letters are capitals (except in a short name, which may be an abbreviation).
bool hasCarelessCase(const String& text, const StringArray& words) {
    int uppers = 0;
    bool hasLowers = false;
    for (auto c = text.getCharPointer(); !c.isEmpty(); ++c) {
        uppers += isUpper(*c) ? 1 : 0;
        hasLowers = hasLowers || isLower(*c);
    }
    if (!hasLowers) return uppers > 4;
    return std::ranges::any_of(
        words, [](const String& word) { return isLower(word[0]) && !isSmallWord(word); });
}

// Capitalises each word, except small words that are not the first.
String capitalised(const String& text) {
    String result;
    for (String rest = text; rest.isNotEmpty();) {
        const int end = rest.indexOfAnyOf(" -/([\"");
        const String word = end < 0 ? rest : rest.substring(0, end);
        bool capital = result.isEmpty() || !isSmallWord(word);
        for (auto c = word.getCharPointer(); !c.isEmpty(); ++c) {
            result += (capital ? isLower(*c) : isUpper(*c)) ? *c ^ 0x20 : *c;
            capital = false;
        }
        if (end >= 0) result += rest[end];
        rest = rest.substring(word.length() + 1);
    }
    return result;
}

// Removes what downloads add ("[HQ]", an address) and extra spaces; corrects careless capitals.
String cleanTitle(const String& text) {
    StringArray words = StringArray::fromTokens(text, false);
    for (int i = words.size(); --i >= 0;) {
        const String& word = words[i];
        if (word.isEmpty() || (word.startsWithChar('[') && word.endsWithChar(']')) ||
            word.startsWithIgnoreCase("www.") || word.startsWithIgnoreCase("http"))
            words.remove(i);
    }
    const String tidy = words.joinIntoString(" ");
    return hasCarelessCase(tidy, words) ? capitalised(tidy) : tidy;
}

// As a title; "Burns, Robert" becomes "Robert Burns", "Earth, Wind & Fire" stays.
String cleanName(const String& text) {
    const String tidy = cleanTitle(text);
    const StringArray words = StringArray::fromTokens(tidy, false);
    const bool isTurned = words.size() == 2 && words[0].length() > 1 &&
                          words[0].indexOfChar(',') == words[0].length() - 1 &&
                          !words[1].containsChar(',');
    return isTurned ? words[1] + " " + words[0].dropLastCharacters(1) : tidy;
}

// The first year from 1500 to 2099 in it, or "".
String cleanYear(const String& text) {
    String digits = text;
    for (String run; digits.isNotEmpty(); digits = digits.substring(run.length() + 1)) {
        run = digits.initialSectionContainingOnly("0123456789");
        if (run.length() == 4 && run >= "1500" && run <= "2099") return run;
    }
    return {};
}

// "07" is "7", "02/10" is "2"; "" when there is no number.
String cleanNumber(const String& text) {
    const String digits = text.trim().initialSectionContainingOnly("0123456789");
    return digits.trimCharactersAtStart("0");
}

// Well-known spellings; else as a title.
String cleanGenre(const String& text) {
    static constexpr const char* spellings[][2] = {{"hiphop", "Hip-Hop"},
                                                   {"hip hop", "Hip-Hop"},
                                                   {"r&b", "R&B"},
                                                   {"rnb", "R&B"},
                                                   {"r & b", "R&B"},
                                                   {"rock n roll", "Rock & Roll"},
                                                   {"sound track", "Soundtrack"}};
    for (const auto& [found, right] : spellings)
        if (text.trim().equalsIgnoreCase(found)) return right;
    return cleanTitle(text);
}

// True for an empty title, artist or album, and for names like "Unknown artist" or "Track 7".
bool isPlaceholder(const String& text) {
    return text.isEmpty() || text.startsWithIgnoreCase("unknown ") ||
           (text.startsWithIgnoreCase("track ") && parseNumber(text.substring(6)));
}

}  // namespace

Decision decide(const StringPairArray& tags) {
    Decision decision;
    const String title = cleanTitle(tags["TrackTitle"]);
    String artist = cleanName(tags["TrackArtist"]);
    String albumArtist = cleanName(tags["AlbumArtist"]);
    if (isPlaceholder(artist)) artist = albumArtist;
    if (isPlaceholder(albumArtist)) albumArtist = artist;
    if (isPlaceholder(title) || isPlaceholder(artist)) return decision;

    String year = cleanYear(tags["Year"]);
    if (year.isEmpty()) year = cleanYear(tags["RelYear"]);
    const auto write = [&](const char* field, const String& value) {
        if (value.isNotEmpty()) decision.fields.set(field, value);
    };
    write("TrackTitle", title);
    const String album = cleanTitle(tags["AlbumTitle"]);
    if (!isPlaceholder(album)) write("AlbumTitle", album);
    // Written even when it is right: the plug-in reports the track's artist when it is missing.
    write("AlbumArtist", albumArtist);
    write("TrackArtist", artist);
    write("TrackNumber", cleanNumber(tags["TrackNumber"]));
    write("Genre", cleanGenre(tags["Genre"]));
    write("Year", year);
    // The two go into one attribute, as "1/2": leave one alone that is right as it stands, and
    // never write the number without the count.
    const String disc = cleanNumber(tags["DiskNumber"]);
    const String discs = cleanNumber(tags["DisksInSet"]);
    if (disc.isNotEmpty() && (disc != tags["DiskNumber"] || discs != tags["DisksInSet"])) {
        write("DiskNumber", disc);
        write("DisksInSet", discs);
    }
    decision.verdict = year.isEmpty() || isPlaceholder(album) ? Verdict::dirty : Verdict::cleaned;
    return decision;
}

}  // namespace orvane::standin::app
