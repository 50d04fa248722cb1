#pragma once

#include <windows.h>

#include "platform/host_call.h"

namespace orvane {

// JUCE's life inside a module that somebody else loads and unloads. It is up from the load of the
// module, is shut down when the last plug-in object goes, so that no thread of ours is left when
// the module is unloaded, and comes up again with the next object.
class JuceSession {
public:
    // At process attach. The calling thread becomes JUCE's message thread. initialiseJuce_GUI.
    static void attach(HINSTANCE module) noexcept;

    // At process detach by FreeLibrary, never at process exit: the other threads are dead then, and
    // a shutdown would wait for them for ever.
    static void detach() noexcept;

    // Keeps JUCE up. Taken and given back on the thread of the object that holds it; the first one
    // makes that thread the message thread.
    class Reference {
    public:
        Reference();  // std::bad_alloc
        ~Reference();
        Reference(const Reference&) = delete;
        Reference& operator=(const Reference&) = delete;
    };

    // Around a callback from JUCE that may let the last reference go: JUCE still stands on the
    // stack below, so it is shut down a moment later, by a message. Message thread only.
    class CallbackScope {
    public:
        CallbackScope() noexcept;
        ~CallbackScope();
        CallbackScope(const CallbackScope&) = delete;
        CallbackScope& operator=(const CallbackScope&) = delete;

    private:
        HostCall m_call;
    };

    [[nodiscard]] static bool isUp() noexcept;

    // Whether JUCE is up and calls back on the calling thread.
    [[nodiscard]] static bool isMessageThread() noexcept;
};

}  // namespace orvane
