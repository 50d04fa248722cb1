#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

namespace orvane {

// Finds and starts a program, and checks that it started. A failure is false or an empty path; the
// log has the reason. One thread at a time.
class AppLauncher {
public:
    AppLauncher() = default;
    virtual ~AppLauncher() = default;
    AppLauncher(const AppLauncher&) = delete;
    AppLauncher& operator=(const AppLauncher&) = delete;

    [[nodiscard]] virtual bool isAppRunning() = 0;
    [[nodiscard]] virtual bool isInstalled();

    // The executable's full path, empty when there is none.
    [[nodiscard]] virtual juce::String getPath() = 0;

    // Starts the program and waits up to 3000 ms, serving calls into the waiting thread. True as
    // soon as the program can be reached, when it still runs after that time, or when it ended with
    // exit code 0 (a second instance that handed over to the first one).
    [[nodiscard]] virtual bool launch(const juce::String& parameters);

protected:
    // Whether the started program is ready; called every 25 ms.
    [[nodiscard]] virtual bool canBeReached() { return false; }

private:
    [[nodiscard]] bool startedWell(HANDLE process);
};

}  // namespace orvane
