// A module with JUCE in it and nothing else, which ours is measured beside.

#include <windows.h>

#include <juce_events/juce_events.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* atExit) {
    if (reason == DLL_PROCESS_ATTACH) {
        juce::Process::setCurrentModuleInstanceHandle(module);
        juce::initialiseJuce_GUI();
    } else if (reason == DLL_PROCESS_DETACH && atExit == nullptr) {
        juce::shutdownJuce_GUI();
    }
    return TRUE;
}
