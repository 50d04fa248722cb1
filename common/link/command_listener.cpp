#include "common/link/command_listener.h"

#include "common/messages/orvane_message.h"
#include "util/log/log.h"

namespace orvane {

void CommandListener::messageReceived(std::span<const std::uint8_t> payload) {
    const auto message = OrvaneMessage::parsePayload(payload);
    const auto* command = dynamic_cast<const OrvaneCommand*>(message.get());
    if (command == nullptr) {
        syslog(LOG_ERR, "CommandListener: command parsing error occured");
        return;
    }
    const auto methods = pluginMethods.lock();
    if (methods == nullptr) return;
    if (!send(command->executeCommand(methods.get())))
        syslog(LOG_ERR, "CommandListener: failed sending response");
}

}  // namespace orvane
