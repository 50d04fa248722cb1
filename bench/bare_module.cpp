// A module that only imports what ours imports, which ours is measured beside: one function of each
// system library.

#include <winsock2.h>

#include <mmsystem.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason <= DLL_THREAD_DETACH) return TRUE;
    // Never run: no reason is as high.
    PathStripToRootW(nullptr);
    SHGetFolderPathW(nullptr, 0, nullptr, 0, nullptr);
    SafeArrayDestroy(nullptr);
    GetFileVersionInfoSizeW(nullptr, nullptr);
    InternetCloseHandle(nullptr);
    RegCloseKey(nullptr);
    CoUninitialize();
    GetMessageTime();
    WSACleanup();
    return timeGetTime() == 0;
}
