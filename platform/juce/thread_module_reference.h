#pragma once

// Included ahead of JUCE's own sources (compiler option -include), never by our code.
//
// JUCE reports a thread as ended before that thread has left this module's code, so a player that
// unloads the plug-in right afterwards would pull the code away from under it. Here every thread
// that JUCE starts holds a reference to the module and gives it back in the same call that ends
// the thread. JUCE also joins each thread's input queue to the message window's: in somebody
// else's process that would let a busy reader thread hold up the player's input, so it is left out.

#include <windows.h>

#include <process.h>

namespace orvane::juce_threads {

using ThreadProc = unsigned(__stdcall*)(void*);

uintptr_t beginThread(void* security, unsigned stackSize, ThreadProc proc, void* argument,
                      unsigned flags, unsigned* threadId);

[[noreturn]] void endThread(unsigned exitCode);

}  // namespace orvane::juce_threads

#define _beginthreadex orvane::juce_threads::beginThread
#define _endthreadex orvane::juce_threads::endThread
#define AttachThreadInput(from, to, attach) (static_cast<void>(from), static_cast<void>(to), FALSE)
