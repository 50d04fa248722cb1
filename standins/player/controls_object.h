#pragma once

// The transport, settings and error list as the player's automation shows them.

#include <wmp.h>

#include "standins/player/com_support.h"
#include "standins/player/model.h"

namespace orvane::standin {

ComRef<IWMPControls> makeControls(ModelPtr model);
ComRef<IWMPSettings> makeSettings(ModelPtr model);
ComRef<IWMPError> makeErrorList(ModelPtr model);

}  // namespace orvane::standin
