#pragma once

// The player's list of items and its playlists. Not thread-safe: the model's lock guards it.

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "standins/player/player_options.h"
#include "standins/player/track.h"

namespace orvane::standin {

using TrackList = std::vector<TrackPtr>;

// A list of items with a name: the user's own, or a view that a query of the library gave.
struct Playlist {
    std::wstring name;
    bool isView = false;
    std::shared_ptr<TrackList> items = std::make_shared<TrackList>();
};
using PlaylistPtr = std::shared_ptr<Playlist>;

class Library {
public:
    // Lists what the player takes for music, film or playlist (.wma, .wmv, .wpl) in the folder and
    // its subfolders by path, then the synthetic items.
    bool open(const PlayerOptions& options, std::string& error);

    [[nodiscard]] const TrackList& tracks() const { return *m_tracks; }
    // The whole library as it is now; costs nothing that grows with its size.
    [[nodiscard]] PlaylistPtr all() const;
    // Items with exactly that path, letters' case aside; cost grows with the matches only.
    [[nodiscard]] PlaylistPtr withPath(const std::wstring& path) const;
    [[nodiscard]] TrackPtr firstWithPath(const std::wstring& path) const;  // may be null
    TrackPtr add(const std::wstring& path);
    // False when it is not there. The file stays.
    bool remove(const TrackPtr& track);

    // The user's playlists in order of making; several may bear one name.
    [[nodiscard]] const std::vector<PlaylistPtr>& playlists() const { return m_playlists; }
    [[nodiscard]] std::vector<PlaylistPtr> playlistsNamed(const std::wstring& name) const;
    PlaylistPtr makePlaylist(const std::wstring& name);
    bool removePlaylist(const PlaylistPtr& playlist);

private:
    void list(TrackPtr track);

    // Shared with the views that were given out: replaced, not changed, while any is held.
    std::shared_ptr<TrackList> m_tracks = std::make_shared<TrackList>();
    std::unordered_map<std::wstring, TrackList> m_byPath;  // by folded path
    std::vector<PlaylistPtr> m_playlists;
};

}  // namespace orvane::standin
