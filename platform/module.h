#pragma once

#include <windows.h>

namespace orvane {

// The module that holds this code: the plug-in's DLL in the player, the program itself where the
// code is linked in. Any thread; nothing throws. GetModuleHandleExW.

// Valid as long as this code is loaded; not counted. Null when the system does not tell.
[[nodiscard]] HMODULE thisModule() noexcept;

// One more reference to it, given back through FreeLibrary, or by a thread of this module's as it
// ends, through FreeLibraryAndExitThread. Null when the system refuses.
[[nodiscard]] HMODULE referenceThisModule() noexcept;

// Keeps it loaded until the process ends, whatever references are given back.
void pinThisModule() noexcept;

}  // namespace orvane
