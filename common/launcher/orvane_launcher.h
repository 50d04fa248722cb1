#pragma once

#include "common/launcher/host_launcher.h"

namespace orvane {

// Knows where the desktop application is installed, whether it runs and how to link to it.
class OrvaneLauncher final : public HostLauncher {
public:
    using HostLauncher::HostLauncher;

    // Whether the mutex "OrVaneApp_Process" exists in this session, be it one that may not be
    // opened. CreateMutexW.
    [[nodiscard]] bool isAppRunning() override;

    // "OrVaneApp.exe" in the folder that HKLM\Software\OrVaneMedia\Settings names as "Path", when
    // there is such a file.
    [[nodiscard]] juce::String getPath() override;

    [[nodiscard]] std::unique_ptr<AppConnector> createConnector(
        std::weak_ptr<IOrvanePluginMethods> methods, ConnectionLost whenLost) override;

protected:
    [[nodiscard]] bool canBeReached() override;
};

}  // namespace orvane
