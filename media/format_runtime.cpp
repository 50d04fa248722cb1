#include "media/format_runtime.h"

#include <wmsdkidl.h>

#include <string>
#include <utility>

#include "platform/srw_lock.h"

namespace orvane {
namespace {

using CreateSyncReader = HRESULT(WINAPI*)(IUnknown*, DWORD, IWMSyncReader**);
using CreateEditor = HRESULT(WINAPI*)(IWMMetadataEditor**);

// Trivially destroyed on purpose: a destructor that frees a module would run at this module's own
// detach, under the loader lock.
struct State {
    SRWLOCK lock = SRWLOCK_INIT;
    HMODULE module = nullptr;
    unsigned uses = 0;
};
constinit State state;

// Beside the program or in the system's folder, never in the current one, which may be a folder of
// downloaded music.
HMODULE loadModule() {
    if (const HMODULE module =
            LoadLibraryExW(L"WMVCore.dll", nullptr,
                           LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32))
        return module;
    if (GetLastError() != ERROR_INVALID_PARAMETER) return nullptr;

    // A Windows 7 that was never updated does not know these flags.
    std::wstring path(MAX_PATH, L'\0');
    const UINT length = GetSystemDirectoryW(path.data(), MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    path.resize(length);
    path += L"\\WMVCore.dll";
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

template <typename Function>
Function function(const char* name) {
    const ExclusiveLock lock(state.lock);
    if (!state.module) state.module = loadModule();
    if (!state.module) return nullptr;
    // By way of a pointer that any function pointer converts to and from.
    return reinterpret_cast<Function>(
        reinterpret_cast<void (*)()>(GetProcAddress(state.module, name)));
}

HRESULT absent() { return HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND); }

}  // namespace

FormatRuntime::FormatRuntime() {
    const ExclusiveLock lock(state.lock);
    ++state.uses;
}

FormatRuntime::~FormatRuntime() {
    HMODULE unused = nullptr;
    {
        const ExclusiveLock lock(state.lock);
        if (--state.uses == 0) unused = std::exchange(state.module, nullptr);
    }
    // Outside our lock: the module's own detach code runs here.
    if (unused) FreeLibrary(unused);
}

HRESULT FormatRuntime::createSyncReader(IWMSyncReader** reader) const {
    *reader = nullptr;
    const auto create = function<CreateSyncReader>("WMCreateSyncReader");
    return create ? create(nullptr, 0, reader) : absent();
}

HRESULT FormatRuntime::createEditor(IWMMetadataEditor** editor) const {
    *editor = nullptr;
    const auto create = function<CreateEditor>("WMCreateEditor");
    return create ? create(editor) : absent();
}

bool FormatRuntime::isLoaded() {
    const ExclusiveLock lock(state.lock);
    return state.module != nullptr;
}

}  // namespace orvane
