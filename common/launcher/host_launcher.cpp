#include "common/launcher/host_launcher.h"

#include "util/log/log.h"

namespace orvane {
namespace {

const char* nameOfPlayer(int id) {
    switch (id) {
        case 3:
            return "wmp";
        case 4:
            return "winamp";
        case 5:
            return "itunes";
        default:
            return nullptr;
    }
}

}  // namespace

HostLauncher::HostLauncher(int playerId) : m_playerId(playerId) {}

bool HostLauncher::launch() {
    const char* const name = nameOfPlayer(m_playerId);
    if (name == nullptr) {
        syslog(LOG_ERR, "%s: unknown player id: %d", "HostLauncher::launch", m_playerId);
        return false;
    }
    return launch("--launched-by=" + juce::String(name));
}

}  // namespace orvane
