#pragma once

// The player's automation, as it hands it to its plug-ins: each object over the model that all of
// them share.

#include <wmp.h>

#include <vector>

#include "standins/player/com_support.h"
#include "standins/player/model.h"

namespace orvane::standin {

// The root: IWMPCore to IWMPCore3 and IConnectionPointContainer.
CComPtr<IWMPCore> makeCore(const ModelPtr& model);
CComPtr<IWMPControls> makeControls(const ModelPtr& model);
CComPtr<IWMPSettings> makeSettings(const ModelPtr& model);
CComPtr<IWMPError> makeErrorList(const ModelPtr& model);
CComPtr<IWMPMediaCollection> makeMediaCollection(const ModelPtr& model);
CComPtr<IWMPPlaylistCollection> makePlaylistCollection(const ModelPtr& model);
// Of a playlist or library view, and of an array of playlists.
CComPtr<IWMPPlaylist> makePlaylist(const ModelPtr& model, const PlaylistPtr& playlist);
CComPtr<IWMPPlaylistArray> makePlaylistArray(const ModelPtr& model,
                                             const std::vector<PlaylistPtr>& playlists);

// A library item's; a new one each time, several may stand for one item.
CComPtr<IWMPMedia> makeMedia(const ModelPtr& model, const TrackPtr& track);
// The item behind a media object of this player, and the list behind a playlist object; null for
// anybody else's object.
TrackPtr trackOf(IUnknown* media);
PlaylistPtr playlistOf(IUnknown* playlist);

}  // namespace orvane::standin
