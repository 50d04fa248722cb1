#pragma once

#include <windows.h>

namespace orvane {

// What the module's exports do, apart from the module so that any program can host the class.
// Any thread; nothing throws.

// The class object of the plug-in class; CLASS_E_CLASSNOTAVAILABLE and null for any other class.
[[nodiscard]] HRESULT getClassObject(REFCLSID clsid, REFIID iid, void** object) noexcept;

// S_OK while no object and no server lock keeps the module loaded, else S_FALSE.
[[nodiscard]] HRESULT canUnloadNow() noexcept;

// Registry entries, then the notice to running players, whatever became of the entries.
[[nodiscard]] HRESULT registerServer() noexcept;
[[nodiscard]] HRESULT unregisterServer() noexcept;

// Lets go of the cached class object; at module end.
void endServer() noexcept;

}  // namespace orvane
