// The module's entry point and the two functions that the runtime's users find by name.

#include <windows.h>

#include <new>

#include "platform/compiler_runtime.h"
#include "standins/format/metadata_editor.h"
#include "standins/format/sync_reader.h"

// A process may load and free this module thousands of times.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processExit) {
    if (reason == DLL_PROCESS_DETACH && processExit == nullptr) orvane::giveBackRuntimeAtEnd();
    return TRUE;
}

extern "C" HRESULT WINAPI WMCreateSyncReader(IUnknown*, DWORD, IWMSyncReader** reader) {
    if (!reader) return E_POINTER;
    *reader = new (std::nothrow) orvane::standin::SyncReader;
    return *reader ? S_OK : E_OUTOFMEMORY;
}

extern "C" HRESULT WINAPI WMCreateEditor(IWMMetadataEditor** editor) {
    if (!editor) return E_POINTER;
    *editor = new (std::nothrow) orvane::standin::MetadataEditor;
    return *editor ? S_OK : E_OUTOFMEMORY;
}
