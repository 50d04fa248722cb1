#pragma once

#include <windows.h>

namespace orvane {

// Writes the class and the player's plug-in entry for the module that holds this code, replacing
// earlier ones. Stops at the first registry call that fails and answers its code as an HRESULT;
// when one of the two keys cannot be opened or made, nothing has been changed. HKEY_CLASSES_ROOT,
// HKEY_LOCAL_MACHINE: needs an administrator.
[[nodiscard]] HRESULT registerPlugin();

// Removes both entries; what is not there is no failure.
[[nodiscard]] HRESULT unregisterPlugin();

// Tells running players that their list of plug-ins changed. Nobody learns whether it worked.
void announcePluginChange();

}  // namespace orvane
