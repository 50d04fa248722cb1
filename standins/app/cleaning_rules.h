#pragma once

// How the stand-in cleans a track's tags. The rules are simple, and the result depends on the tags
// only: enough to show that reading, deciding and writing work. The real application asks a
// database.

#include "standins/app/text.h"

namespace orvane::standin::app {

enum class Verdict { cleaned, dirty, notFound };

struct Decision {
    Verdict verdict = Verdict::notFound;
    StringPairArray fields;  // to write, never with an empty value; none for a track not found
};

// `tags` are the fields as the plug-in reports them. A track without a title or any artist, or
// with placeholders for them, is not found; one that still lacks year or album is dirty.
Decision decide(const StringPairArray& tags);

}  // namespace orvane::standin::app
