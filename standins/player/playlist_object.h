#pragma once

// The COM faces of a playlist or library view, and of an array of playlists.

#include <wmp.h>

#include <vector>

#include "standins/player/com_support.h"
#include "standins/player/model.h"

namespace orvane::standin {

ComRef<IWMPPlaylist> makePlaylistObject(ModelPtr model, PlaylistPtr playlist);
ComRef<IWMPPlaylistArray> makePlaylistArray(ModelPtr model, std::vector<PlaylistPtr> playlists);

}  // namespace orvane::standin
