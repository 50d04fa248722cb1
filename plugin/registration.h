#pragma once

#include <windows.h>

namespace orvane {

// Writes the COM class and the player's plug-in entry for this module, replacing earlier ones.
// Returns the first registry error as an HRESULT. When one of the two keys cannot be opened or
// created, nothing is changed. HKEY_CLASSES_ROOT and HKEY_LOCAL_MACHINE: needs an administrator.
[[nodiscard]] HRESULT registerPlugin();

// Removes both entries. A missing entry is not an error.
[[nodiscard]] HRESULT unregisterPlugin();

// Notifies running players that the list of plug-ins changed. Errors are ignored.
void announcePluginChange();

}  // namespace orvane
