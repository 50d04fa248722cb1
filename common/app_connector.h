#pragma once

#include "common/application_events.h"
#include "common/plugin_methods.h"

#include <juce_core/juce_core.h>
#include <juce_events/juce_events.h>

namespace orvane {

class OrvaneEvent;

// Turns player happenings into event messages; the subclass owns the link they travel on.
// Event operations may come from any thread; connect, disconnect, isConnected and destruction
// come from the object's own thread, never at once.
class AppConnector : public IOrvaneApplicationEvents, protected juce::Timer {
public:
    virtual ~AppConnector();

    // Opens whatever is not open; true when the whole link is up afterwards. Never waits for an
    // application that is not there.
    virtual bool connect() = 0;
    virtual void disconnect() = 0;
    virtual bool isConnected() = 0;
    virtual bool postEvent(const OrvaneEvent& event) = 0;
};

}  // namespace orvane
