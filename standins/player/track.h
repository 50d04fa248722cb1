#pragma once

// One item of the player's library and its attributes: tags that lie in the item's own file, facts
// of its header, and what the player remembers of its user.

#include <windows.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "standins/player/player_options.h"

namespace orvane::standin {

struct Track {
    std::wstring path;       // as the player shows it, absolute
    bool synthetic = false;  // has no file
    bool inLibrary = false;
    std::map<std::wstring, std::wstring> library;  // what has no place in a file
    std::map<std::wstring, std::wstring> unsaved;  // what was set and is to reach the file
    bool saveIsDue = false;
};
using TrackPtr = std::shared_ptr<Track>;

std::wstring mediaTypeOf(const std::wstring& path);  // "audio", "video" or "playlist"

// Case-folded text for comparing paths and names the way the file system does.
std::wstring foldCase(std::wstring text);

// Reads and writes attributes under the player's names for them. Not thread-safe: the model's lock
// guards it. Files may change behind its back; what it remembers of one is dropped when they do.
class TagStore {
public:
    explicit TagStore(const PlayerOptions& options) : m_options(options) {}

    // All values of an attribute, the library's own before the file's. Empty for one that the item
    // lacks, or whose file is missing or is no ASF file.
    std::vector<std::wstring> read(const Track& track, const std::wstring& attribute);

    // Makes `value` the only one; an empty one removes the tag. It is to be saved then. S_FALSE for
    // an attribute that neither library nor file keeps. E_ACCESSDENIED for one that is not the
    // user's to write and for a read-only file, E_INVALIDARG for a date that is none.
    HRESULT write(Track& track, const std::wstring& attribute, const std::wstring& value);

    // Writes what was set into the file in one step. False when somebody has the file: the old one
    // stays whole, and it may be tried again.
    bool save(Track& track);

    static bool isReadOnly(const std::wstring& attribute);

    double durationSeconds(const Track& track);

private:
    struct Snapshot {
        std::wstring path;
        std::uint64_t size = 0;
        std::uint64_t modified = 0;
        std::map<std::wstring, std::vector<std::wstring>> tags;
        std::uint32_t bitrate = 0;
        std::uint64_t durationHns = 0;
    };
    const Snapshot* snapshot(const Track& track);  // null when the file has none
    void forget(const std::wstring& path);
    [[nodiscard]] bool isDocumented(const Track& track) const {
        return m_options.documentedAttributes && track.inLibrary && !track.synthetic;
    }

    const PlayerOptions& m_options;
    std::deque<Snapshot> m_recent;  // newest first
};

}  // namespace orvane::standin
