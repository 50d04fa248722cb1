#pragma once

#include <windows.h>

namespace orvane {

// The implementation of the module's exports, separate from the module so that tests can call it.
// Any thread; nothing throws.

// Returns the plug-in's class object; CLASS_E_CLASSNOTAVAILABLE and null for any other class.
[[nodiscard]] HRESULT getClassObject(REFCLSID clsid, REFIID iid, void** object) noexcept;

// S_OK when no object and no server lock needs the module, else S_FALSE.
[[nodiscard]] HRESULT canUnloadNow() noexcept;

// Writes or removes the registry entries, then notifies running players, also after an error.
[[nodiscard]] HRESULT registerServer() noexcept;
[[nodiscard]] HRESULT unregisterServer() noexcept;

// Releases the cached class object. Called when the module is unloaded.
void endServer() noexcept;

}  // namespace orvane
