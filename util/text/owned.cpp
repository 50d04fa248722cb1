#include "util/text/owned.h"

#include <cstring>
#include <limits>

namespace orvane {

OwnedText joinTexts(std::initializer_list<std::string_view> parts) noexcept {
    std::size_t length = 1;
    for (const std::string_view part : parts) {
        if (part.size() > std::numeric_limits<std::size_t>::max() - length) return nullptr;
        length += part.size();
    }
    OwnedText joined = allocateText(length);
    if (!joined) return nullptr;
    char* end = joined.get();
    for (const std::string_view part : parts) {
        if (part.empty()) continue;  // an empty view may point nowhere
        std::memcpy(end, part.data(), part.size());
        end += part.size();
    }
    return joined;
}

}  // namespace orvane
