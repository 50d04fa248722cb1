#pragma once

#include <functional>

#include "platform/handles.h"

namespace orvane {

// Starts a thread that holds a reference to this module until it has left the module's code, so
// FreeLibrary does not have to wait for it. `body` must not throw; it is destroyed on the thread,
// before the reference is released. Closing the handle does not end the thread. Returns an empty
// handle on failure; may throw std::bad_alloc. _beginthreadex, FreeLibraryAndExitThread.
[[nodiscard]] UniqueHandle startModuleThread(std::function<void()> body);

}  // namespace orvane
