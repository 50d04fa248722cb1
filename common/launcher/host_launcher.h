#pragma once

#include <memory>

#include "common/launcher/app_launcher.h"
#include "common/link/app_connector.h"
#include "common/link/keep_alive.h"

namespace orvane {

class IOrvanePluginMethods;

// A launcher that tells the application which player started it.
class HostLauncher : public AppLauncher {
public:
    // 3 is "wmp", 4 "winamp", 5 "itunes"; any other id cannot launch.
    explicit HostLauncher(int playerId);

    // A new connector that answers commands through `methods` (not owned), or null. Nothing is
    // connected yet. `methods` outlives the connector and, when that leaves a command behind that
    // does not end, what `keepAlive` answers then; common/link/keep_alive.h.
    [[nodiscard]] virtual std::unique_ptr<AppConnector> createConnector(
        IOrvanePluginMethods* methods, KeepAlive keepAlive) = 0;
    [[nodiscard]] std::unique_ptr<AppConnector> createConnector(IOrvanePluginMethods* methods) {
        return createConnector(methods, nullptr);
    }

    using AppLauncher::launch;
    // Launches with "--launched-by=" and the player's name.
    [[nodiscard]] bool launch();

private:
    const int m_playerId;
};

}  // namespace orvane
