// The module's entry point and its four exports.

#include "plugin/server.h"

#include <windows.h>

#include "platform/compiler_runtime.h"
#include "platform/process_end.h"
#include "util/shared_log/shared_log.h"

// Runs under the loader lock.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processExit) {
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(instance);
    if (reason != DLL_PROCESS_DETACH) return TRUE;
    orvane::processIsEnding = processExit != nullptr;
    if (processExit == nullptr) orvane::endServer();
    orvane::closelog_on_exit();
    if (processExit == nullptr) orvane::giveBackRuntimeAtEnd();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    return orvane::getClassObject(clsid, iid, object);
}

STDAPI DllCanUnloadNow() { return orvane::canUnloadNow(); }

STDAPI DllRegisterServer() { return orvane::registerServer(); }

STDAPI DllUnregisterServer() { return orvane::unregisterServer(); }
