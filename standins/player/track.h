#pragma once

// One item of the player's library and its attributes: tags that lie in the item's own file, facts
// of its header, and what the player remembers of its user.

#include <windows.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

namespace orvane::standin {

struct Track {
    std::wstring path;       // as the player shows it, absolute
    bool synthetic = false;  // has no file: all attributes are in `memory`
    std::map<std::wstring, std::wstring> memory;
};
using TrackPtr = std::shared_ptr<Track>;

// Case-folded text for comparing paths and names the way the file system does.
std::wstring foldCase(std::wstring text);

// Reads and writes attributes under the player's names for them. Not thread-safe: the model's lock
// guards it. Files may change behind its back; what it remembers of one is dropped when they do.
class TagStore {
public:
    // S_OK with empty text for an attribute that the item lacks, or whose file is missing or is no
    // ASF file.
    HRESULT read(const Track& track, const std::wstring& attribute, std::wstring& value);

    // Writes into the file in one step; an empty value removes the tag. E_ACCESSDENIED for an
    // attribute that is not the user's to write or a file that cannot be replaced (the old one
    // stays whole), E_INVALIDARG for a date that is none.
    HRESULT write(Track& track, const std::wstring& attribute, const std::wstring& value);

    double durationSeconds(const Track& track);

private:
    struct Snapshot {
        std::wstring path;
        std::uint64_t size = 0;
        std::uint64_t modified = 0;
        std::map<std::wstring, std::wstring> tags;
        std::uint32_t bitrate = 0;
        std::uint64_t durationHns = 0;
    };
    const Snapshot* snapshot(const Track& track);  // null when the file has none
    void forget(const std::wstring& path);

    std::deque<Snapshot> m_recent;  // newest first
};

}  // namespace orvane::standin
