#pragma once

#include "common/launcher/host_launcher.h"

namespace orvane {

// The launcher of the desktop application OrVaneApp.exe.
class OrvaneLauncher final : public HostLauncher {
public:
    using HostLauncher::HostLauncher;

    // Whether the mutex "OrVaneApp_Process" exists in this session, also when access to it is
    // denied. CreateMutexW.
    [[nodiscard]] bool isAppRunning() override;

    // The path of OrVaneApp.exe in the folder that the registry value "Path" in
    // HKLM\Software\OrVaneMedia\Settings names; empty when there is no such file.
    [[nodiscard]] juce::String getPath() override;

    [[nodiscard]] std::unique_ptr<AppConnector> createConnector(
        std::weak_ptr<IOrvanePluginMethods> methods, ConnectionLost whenLost) override;

protected:
    [[nodiscard]] bool canBeReached() override;
};

}  // namespace orvane
