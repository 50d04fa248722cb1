#pragma once

// What the stand-in's cleaning makes of a track's tags. Simple, and always the same for the same
// tags: enough to show that reading, deciding and writing work. The real application asks a
// database.

#include "standins/app/message.h"

namespace orvane::standin::app {

enum class Verdict { cleaned, dirty, notFound };
const char* describe(Verdict verdict);

struct Decision {
    Verdict verdict = Verdict::notFound;
    Parameters fields;  // to write, never with an empty value; nothing for a track not found
};

// `tags` are the fields as the plug-in reports them. A track without a title or any artist, or
// with placeholders for them, is not found; one that still lacks year or album is dirty.
Decision decide(const Parameters& tags);

// The single rules, for whoever wonders why a value changed.
std::string cleanTitle(std::string_view text);   // no litter, spaces right, capitals if careless
std::string cleanName(std::string_view text);    // as a title; "Burns, Robert" the right way round
std::string cleanYear(std::string_view text);    // the first year from 1500 to 2099 in it, or ""
std::string cleanNumber(std::string_view text);  // "07" is "7"; "" when there is no number
std::string cleanGenre(std::string_view text);   // well-known spellings; else as a title

}  // namespace orvane::standin::app
