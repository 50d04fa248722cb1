#pragma once

#include <memory>

#include "common/launcher/app_launcher.h"
#include "common/link/app_connector.h"
#include "common/link/pipe_listener.h"

namespace orvane {

class IOrvanePluginMethods;

// A launcher that tells the application which player started it.
class HostLauncher : public AppLauncher {
public:
    // 3 is "wmp", 4 "winamp", 5 "itunes"; launch() fails for any other id.
    explicit HostLauncher(int playerId);

    // A new connector, not yet connected, or null. It carries out commands through `methods`.
    // `whenLost`: see OrvaneAppConnector.
    [[nodiscard]] virtual std::unique_ptr<AppConnector> createConnector(
        std::weak_ptr<IOrvanePluginMethods> methods, ConnectionLost whenLost) = 0;

    using AppLauncher::launch;
    // Launches with "--launched-by=" and the player's name.
    [[nodiscard]] bool launch();

private:
    const int m_playerId;
};

}  // namespace orvane
