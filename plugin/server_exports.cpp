// The module's entry point and its four exports.

#include "plugin/server.h"

#include <windows.h>

#include <cstdlib>

#include "platform/juce/session.h"
#include "platform/thread_library.h"
#include "util/shared_log/shared_log.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processExit) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            std::atexit(&orvane::closelog_on_exit);
            orvane::JuceSession::attach(instance);
            DisableThreadLibraryCalls(instance);
            break;
        case DLL_PROCESS_DETACH:
            // At process exit the other threads are gone, with whatever locks they held.
            if (processExit != nullptr) break;
            orvane::endServer();
            orvane::JuceSession::detach();
            orvane::giveBackThreadSlotsAtEnd();
            break;
        default:
            break;
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    return orvane::getClassObject(clsid, iid, object);
}

STDAPI DllCanUnloadNow() { return orvane::canUnloadNow(); }

STDAPI DllRegisterServer() { return orvane::registerServer(); }

STDAPI DllUnregisterServer() { return orvane::unregisterServer(); }
