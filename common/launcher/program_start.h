#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include "platform/handles.h"

namespace orvane {

// Starts the program file `path` with `parameters` in the working directory `directory` (may be
// empty), as if opened from the desktop, without a message box on failure. ShellExecuteExW.
// That call is limited to MAX_PATH units: a longer path is started by its extended-length name,
// in the caller's working directory when `directory` is too long to be one.
//
// On success `process` holds the process, or is empty when the system did not return it. False with
// the thread's last error set.
[[nodiscard]] bool startProgram(const juce::String& path, const juce::String& parameters,
                                const juce::String& directory, UniqueHandle& process);

}  // namespace orvane
