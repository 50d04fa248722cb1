#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

namespace orvane {

// Starts a program and judges whether the start went well. Failures are false or an empty path,
// each with its reason in the log. One thread at a time.
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

    // True as soon as the program can be reached, when it is still running after 3000 ms, or when
    // it has ended with exit code 0 by then, as a second instance does that hands over to the
    // first. Calls into the waiting thread are served meanwhile.
    [[nodiscard]] virtual bool launch(const juce::String& parameters);

protected:
    // Whether the program that was started is ready; asked every 25 ms.
    [[nodiscard]] virtual bool canBeReached() { return false; }

private:
    [[nodiscard]] bool startedWell(HANDLE process);
};

}  // namespace orvane
