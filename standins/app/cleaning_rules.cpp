#include "standins/app/cleaning_rules.h"

#include <algorithm>
#include <array>

#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Letters of ASCII and Latin-1, the latter as their two bytes; everything else has no case here.
enum class Case { none, upper, lower };
struct Letter {
    Case letterCase = Case::none;
    std::size_t size = 1;
};
Letter letterAt(std::string_view text, std::size_t at) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (first >= 'A' && first <= 'Z') return {Case::upper, 1};
    if (first >= 'a' && first <= 'z') return {Case::lower, 1};
    if (first != 0xC3 || at + 1 >= text.size()) return {};
    const auto second = static_cast<unsigned char>(text[at + 1]);
    if (second == 0x97 || second == 0x9F || second == 0xB7 || second == 0xBF)
        return {Case::none, 2};
    return {second < 0xA0 ? Case::upper : Case::lower, 2};
}

void append(std::string& out, std::string_view text, std::size_t at, Letter letter, Case wanted) {
    std::string piece(text.substr(at, letter.size));
    if (letter.letterCase != Case::none && letter.letterCase != wanted)
        piece.back() = static_cast<char>(static_cast<unsigned char>(piece.back()) ^ 0x20);
    out += piece;
}

bool isSmallWord(std::string_view word) {
    static constexpr std::array<const char*, 12> words = {"a",  "an", "and", "at", "de",  "in",
                                                          "la", "of", "on",  "or", "the", "to"};
    return std::any_of(words.begin(), words.end(),
                       [&](const char* small) { return sameIgnoringCase(small, word); });
}

// Whether the capitals look like nobody's choice: a word that begins small without being one of
// the small ones, or capitals throughout (but for a short name, which may be an abbreviation).
bool hasCarelessCase(std::string_view text) {
    std::size_t uppers = 0, lowers = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Letter letter = letterAt(text, at);
        if (letter.letterCase == Case::upper) ++uppers;
        if (letter.letterCase == Case::lower) ++lowers;
        at += letter.size;
    }
    if (lowers == 0) return uppers > 4;
    const std::vector<std::string> words = split(text, ' ');
    return std::any_of(words.begin(), words.end(), [](const std::string& word) {
        return letterAt(word, 0).letterCase == Case::lower && !isSmallWord(word);
    });
}

std::string spacesPutRight(std::string_view text) {
    std::string result;
    for (const char c : trimmed(text)) {
        const bool space = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (space && !result.empty() && result.back() == ' ') continue;
        result += space ? ' ' : c;
    }
    return result;
}

// What downloads and rips add: "[HQ]", an address.
std::string withoutLitter(std::string_view text) {
    std::string kept;
    for (const std::string& word : split(text, ' ')) {
        const bool bracketed = word.size() > 1 && word.front() == '[' && word.back() == ']';
        const bool address =
            startsWithIgnoringCase(word, "www.") || startsWithIgnoringCase(word, "http");
        if (!bracketed && !address) kept += word + ' ';
    }
    return kept;
}

// What stands for "nothing" in a title, an artist or an album.
bool isPlaceholder(std::string_view text) {
    if (text.empty() || startsWithIgnoringCase(text, "unknown ")) return true;
    return startsWithIgnoringCase(text, "track ") && parseNumber(trimmed(text.substr(6)));
}

}  // namespace

const char* describe(Verdict verdict) {
    switch (verdict) {
        case Verdict::cleaned:
            return "cleaned";
        case Verdict::dirty:
            return "dirty";
        case Verdict::notFound:
            break;
    }
    return "not found";
}

std::string cleanTitle(std::string_view text) {
    const std::string tidy = spacesPutRight(withoutLitter(text));
    if (!hasCarelessCase(tidy)) return tidy;
    std::string result;
    bool wordBegins = true;
    bool firstWord = true;
    for (std::size_t at = 0; at < tidy.size();) {
        const std::size_t end = std::min(tidy.find_first_of(" -/([\"", at), tidy.size());
        const bool small = !firstWord && isSmallWord(std::string_view(tidy).substr(at, end - at));
        while (at < tidy.size()) {
            const Letter letter = letterAt(tidy, at);
            append(result, tidy, at, letter, wordBegins && !small ? Case::upper : Case::lower);
            at += letter.size;
            wordBegins = at > end;
            if (wordBegins) break;
        }
        firstWord = false;
    }
    return result;
}

std::string cleanName(std::string_view text) {
    const std::string tidy = cleanTitle(text);
    // "Burns, Robert", but not "Earth, Wind & Fire".
    const std::vector<std::string> parts = split(tidy, ',');
    if (parts.size() != 2) return tidy;
    const std::string last(trimmed(parts[0])), first(trimmed(parts[1]));
    const bool singleWords =
        !last.empty() && !first.empty() && (last + first).find(' ') == std::string::npos;
    return singleWords ? first + ' ' + last : tidy;
}

std::string cleanYear(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        std::size_t digits = 0;
        while (at + digits < text.size() && isDigit(text[at + digits])) ++digits;
        const std::string_view run = text.substr(at, digits);
        if (digits == 4 && run >= "1500" && run <= "2099") return std::string(run);
        at += digits + 1;
    }
    return {};
}

std::string cleanNumber(std::string_view text) {
    std::string_view digits = trimmed(text);
    std::size_t count = 0;
    while (count < digits.size() && isDigit(digits[count])) ++count;
    digits = digits.substr(0, count);
    while (digits.size() > 1 && digits.front() == '0') digits.remove_prefix(1);
    return digits == "0" ? std::string() : std::string(digits);
}

std::string cleanGenre(std::string_view text) {
    struct Spelling {
        const char* found;
        const char* right;
    };
    static constexpr std::array<Spelling, 8> spellings = {{{"hiphop", "Hip-Hop"},
                                                           {"hip hop", "Hip-Hop"},
                                                           {"rnb", "R&B"},
                                                           {"r & b", "R&B"},
                                                           {"r&b", "R&B"},
                                                           {"rock & roll", "Rock & Roll"},
                                                           {"rock n roll", "Rock & Roll"},
                                                           {"sound track", "Soundtrack"}}};
    const std::string tidy = spacesPutRight(text);
    for (const Spelling& spelling : spellings)
        if (sameIgnoringCase(spelling.found, tidy)) return spelling.right;
    return cleanTitle(tidy);
}

Decision decide(const Parameters& tags) {
    Decision decision;
    const std::string title = cleanTitle(valueOf(tags, "TrackTitle"));
    std::string artist = cleanName(valueOf(tags, "TrackArtist"));
    std::string albumArtist = cleanName(valueOf(tags, "AlbumArtist"));
    if (isPlaceholder(artist)) artist = albumArtist;
    if (isPlaceholder(albumArtist)) albumArtist = artist;
    if (isPlaceholder(title) || isPlaceholder(artist)) return decision;

    std::string year = cleanYear(valueOf(tags, "Year"));
    if (year.empty()) year = cleanYear(valueOf(tags, "RelYear"));
    const std::string disc = cleanNumber(valueOf(tags, "DiskNumber"));
    const auto write = [&](const char* field, const std::string& value) {
        if (!value.empty()) decision.fields.emplace_back(field, value);
    };
    write("TrackTitle", title);
    const std::string album = cleanTitle(valueOf(tags, "AlbumTitle"));
    if (!isPlaceholder(album)) write("AlbumTitle", album);
    // Always, also when it is right: the plug-in puts the track's artist where it is missing.
    write("AlbumArtist", albumArtist);
    write("TrackArtist", artist);
    write("TrackNumber", cleanNumber(valueOf(tags, "TrackNumber")));
    write("Genre", cleanGenre(valueOf(tags, "Genre")));
    write("Year", year);
    // The two go into one attribute, as "1/2": leave one alone that is right as it stands, and
    // never write the number without the count.
    const std::string discs = cleanNumber(valueOf(tags, "DisksInSet"));
    if (!disc.empty() &&
        (disc != valueOf(tags, "DiskNumber") || discs != valueOf(tags, "DisksInSet"))) {
        write("DiskNumber", disc);
        write("DisksInSet", discs);
    }
    decision.verdict = year.empty() || isPlaceholder(album) ? Verdict::dirty : Verdict::cleaned;
    return decision;
}

}  // namespace orvane::standin::app
