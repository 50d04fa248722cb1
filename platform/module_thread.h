#pragma once

#include <functional>

#include "platform/handles.h"

namespace orvane {

// Starts a thread that holds a reference to this module until it has left its code, so that neither
// the player's FreeLibrary nor anybody else has to wait for it. `body` must not throw; it is
// destroyed on the thread, before the reference goes. Closing the handle does not end the thread.
// None when the system refuses; std::bad_alloc. _beginthreadex, FreeLibraryAndExitThread.
[[nodiscard]] UniqueHandle startModuleThread(std::function<void()> body);

}  // namespace orvane
