#pragma once

// The COM face of a library item; a new one each time, several may stand for one item.

#include <wmp.h>

#include "standins/player/com_support.h"
#include "standins/player/model.h"

namespace orvane::standin {

ComRef<IWMPMedia3> makeMedia(ModelPtr model, TrackPtr track);

// The item behind a media object of this player; null for anybody else's object.
TrackPtr trackOf(IUnknown* media);

}  // namespace orvane::standin
