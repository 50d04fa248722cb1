#pragma once

// The root of the player's automation, which it hands to its plug-ins: IWMPCore to IWMPCore3 and
// IConnectionPointContainer.

#include <wmp.h>

#include "standins/player/com_support.h"
#include "standins/player/model.h"

namespace orvane::standin {

ComRef<IWMPCore> makeCore(ModelPtr model);

}  // namespace orvane::standin
