#include "platform/juce/thread_module_reference.h"

#undef _beginthreadex
#undef _endthreadex

#include <memory>
#include <new>

#include "platform/module.h"

namespace orvane::juce_threads {
namespace {

struct Start {
    ThreadProc proc;
    void* argument;
};

unsigned __stdcall runThread(void* argument) {
    Start start{};
    {
        const std::unique_ptr<Start> owned(static_cast<Start*>(argument));
        start = *owned;
    }
    endThread(start.proc(start.argument));
}

}  // namespace

uintptr_t beginThread(void* security, unsigned stackSize, ThreadProc proc, void* argument,
                      unsigned flags, unsigned* threadId) {
    std::unique_ptr<Start> start(new (std::nothrow) Start{proc, argument});
    if (start == nullptr) return 0;

    const HMODULE module = referenceThisModule();
    if (module == nullptr) return 0;

    const uintptr_t thread =
        _beginthreadex(security, stackSize, &runThread, start.get(), flags, threadId);
    if (thread == 0) {
        FreeLibrary(module);
        return 0;
    }
    // The new thread owns it now, even while it is still suspended.
    static_cast<void>(start.release());
    return thread;
}

void endThread(unsigned exitCode) {
    // The C runtime frees its record of the thread when the system tells it of the thread's end,
    // so nothing is lost by not returning through it.
    FreeLibraryAndExitThread(thisModule(), exitCode);
}

}  // namespace orvane::juce_threads
