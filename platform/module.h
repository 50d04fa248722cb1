#pragma once

#include <windows.h>

namespace orvane {

// The module that contains this code: the plug-in's DLL in the player, or a test program. Any
// thread; nothing throws. GetModuleHandleExW.

// The module's handle, without a reference. Null on failure.
[[nodiscard]] HMODULE thisModule() noexcept;

// Adds a reference. Release it with FreeLibrary, or at the end of a thread of this module with
// FreeLibraryAndExitThread. Null on failure.
[[nodiscard]] HMODULE referenceThisModule() noexcept;

// Keeps the module loaded until the process ends, whatever references are released.
void pinThisModule() noexcept;

}  // namespace orvane
