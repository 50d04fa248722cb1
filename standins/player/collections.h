#pragma once

// The library and the user's playlists as the player's automation shows them.

#include <wmp.h>

#include "standins/player/com_support.h"
#include "standins/player/model.h"

namespace orvane::standin {

ComRef<IWMPMediaCollection> makeMediaCollection(ModelPtr model);
ComRef<IWMPPlaylistCollection> makePlaylistCollection(ModelPtr model);

}  // namespace orvane::standin
