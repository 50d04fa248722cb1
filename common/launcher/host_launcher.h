#pragma once

#include <memory>

#include "common/launcher/app_launcher.h"
#include "common/link/app_connector.h"

namespace orvane {

class IOrvanePluginMethods;

// A launcher that tells the application which player started it.
class HostLauncher : public AppLauncher {
public:
    // 3 is "wmp", 4 "winamp", 5 "itunes"; any other id cannot launch.
    explicit HostLauncher(int playerId);

    // A new connector that answers commands through `methods` (not owned, outlives the connector),
    // or null. Nothing is connected yet.
    [[nodiscard]] virtual std::unique_ptr<AppConnector> createConnector(
        IOrvanePluginMethods* methods) = 0;

    using AppLauncher::launch;
    // Launches with "--launched-by=" and the player's name.
    [[nodiscard]] bool launch();

private:
    const int m_playerId;
};

}  // namespace orvane
