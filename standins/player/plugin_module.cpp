#include "standins/player/plugin_module.h"

#include "standins/player/plugin_host.h"

namespace orvane::standin {

namespace {

constexpr CLSID kPluginClass = {
    0x9893a0e1, 0xee98, 0x448f, {0x81, 0xee, 0xd2, 0xd1, 0x56, 0x66, 0x21, 0x5e}};

template <typename Function>
Function* functionOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// What the application still lacks, empty when it has all.
std::string missing() {
    const UniqueHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, L"OrVaneApp_Process"));
    if (!mutex && GetLastError() != ERROR_ACCESS_DENIED) return "the mutex OrVaneApp_Process";
    for (const char* pipe : {"IpcOrvaneEventPipe", "IpcOrvaneCommandPipe"})
        if (!WaitNamedPipeA((std::string(R"(\\.\pipe\)") + pipe).c_str(), 1))
            return std::string("the pipe ") + pipe;
    return {};
}

}  // namespace

const CLSID& PluginModule::classId() { return kPluginClass; }

bool PluginModule::load(const std::wstring& file, std::string& error) {
    wchar_t path[32'768] = {};
    GetFullPathNameW(file.c_str(), static_cast<DWORD>(std::size(path)), path, nullptr);
    m_module.reset(LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    error = "the plug-in " + toUtf8(file) + " cannot be loaded";
    if (!m_module) return false;
    auto* const getClassObject =
        functionOf<decltype(DllGetClassObject)>(m_module.get(), "DllGetClassObject");
    CComPtr<IClassFactory> factory;
    if (getClassObject == nullptr ||
        FAILED(getClassObject(kPluginClass, IID_IClassFactory, reinterpret_cast<void**>(&factory))))
        return false;
    return SUCCEEDED(CoRegisterClassObject(kPluginClass, factory, CLSCTX_INPROC_SERVER,
                                           REGCLS_MULTIPLEUSE, &m_registration));
}

PluginModule::~PluginModule() {
    if (!m_module) return;
    if (m_registration != 0) CoRevokeClassObject(m_registration);
    auto* const canUnload =
        functionOf<decltype(DllCanUnloadNow)>(m_module.get(), "DllCanUnloadNow");
    if (canUnload != nullptr && canUnload() != S_OK) static_cast<void>(m_module.release());
}

void waitForApplication(const std::function<void(const std::string&)>& report) {
    constexpr DWORD kLookAfterMs = 100;
    std::string told;
    for (std::string lack = missing(); !lack.empty(); lack = missing()) {
        if (lack != told) report("waiting for the application: it has not made " + lack);
        told = lack;
        Sleep(kLookAfterMs);
    }
}

}  // namespace orvane::standin
