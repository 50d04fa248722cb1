#include "platform/juce/session.h"

#include <juce_core/juce_core.h>
#include <juce_events/juce_events.h>
#include <ole2.h>

#include "platform/module.h"

namespace juce {
extern HWND juce_messageWindowHandle;
}

namespace orvane {
namespace {

// Guards what follows, but not at attach and detach: no other thread is in the module then, and
// they run under the loader's lock, which bringing JUCE up (windows, COM) needs on its way.
juce::CriticalSection lock;
int references = 0;
int callbacks = 0;  // of JUCE on the message thread's stack
bool up = false;

void bringUp() {
    if (up) return;
    juce::initialiseJuce_GUI();
    up = true;
}

// JUCE's window belongs to a thread that nobody could destroy it from but that one. Its procedure
// is ours, so it gets the system's before this module goes or another thread takes over.
void abandonMessageWindow() {
    if (juce::juce_messageWindowHandle == nullptr) return;
    SetWindowLongW(juce::juce_messageWindowHandle, GWL_WNDPROC,
                   static_cast<LONG>(reinterpret_cast<LONG_PTR>(&DefWindowProcW)));
}

// The module was loaded by a thread that is not the one using it: timers have to call back here.
void moveToThisThread() {
    abandonMessageWindow();
    // JUCE leaves COM on this thread, which it had entered on the other one.
    static_cast<void>(OleInitialize(nullptr));
    juce::MessageManager::getInstance()->setCurrentThreadAsMessageThread();
}

void shutDownLater();

void shutDownIfUnused() {
    if (!up || references > 0 || !juce::MessageManager::existsAndIsCurrentThread()) return;
    if (callbacks > 0) {
        shutDownLater();
        return;
    }
    up = false;
    juce::shutdownJuce_GUI();
}

void CALLBACK onShutDownTimer(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    const juce::ScopedLock guard(lock);
    try {
        shutDownIfUnused();
    } catch (...) {
        up = false;
    }
}

void shutDownLater() {
    // From now on there is a call into this module that no reference of the host covers.
    pinThisModule();
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &onShutDownTimer);
}

}  // namespace

void JuceSession::attach(HINSTANCE module) noexcept {
    try {
        juce::Process::setCurrentModuleInstanceHandle(module);
        bringUp();
    } catch (...) {
        up = false;  // the first object tries again
    }
}

void JuceSession::detach() noexcept {
    if (!up) return;
    try {
        if (juce::MessageManager::existsAndIsCurrentThread()) {
            up = false;
            juce::shutdownJuce_GUI();
        } else {
            abandonMessageWindow();
        }
    } catch (...) {
        up = false;
    }
}

bool JuceSession::isUp() noexcept {
    const juce::ScopedLock guard(lock);
    return up;
}

bool JuceSession::isMessageThread() noexcept {
    return juce::MessageManager::existsAndIsCurrentThread();
}

JuceSession::Reference::Reference() {
    const juce::ScopedLock guard(lock);
    bringUp();
    if (references == 0 && !juce::MessageManager::existsAndIsCurrentThread()) moveToThisThread();
    ++references;
}

JuceSession::Reference::~Reference() {
    const juce::ScopedLock guard(lock);
    --references;
    try {
        shutDownIfUnused();
    } catch (...) {
        up = false;
    }
}

JuceSession::CallbackScope::CallbackScope() noexcept {
    const juce::ScopedLock guard(lock);
    ++callbacks;
}

JuceSession::CallbackScope::~CallbackScope() {
    const juce::ScopedLock guard(lock);
    --callbacks;
}

}  // namespace orvane
