// A module that only imports what ours imports, which ours is measured beside: one function of each
// system library.

#include <windows.h>

#include <shlobj.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason <= DLL_THREAD_DETACH) return TRUE;
    // Never run: no reason is as high.
    SHGetFolderPathW(nullptr, 0, nullptr, 0, nullptr);
    SafeArrayDestroy(nullptr);
    RegCloseKey(nullptr);
    CoUninitialize();
    return GetMessageTime() == 0;
}
