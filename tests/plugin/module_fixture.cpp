#include "tests/plugin/module_fixture.h"

namespace orvane::test {

std::wstring registeredClassText() {
    UniqueRegKey plugins;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, kPluginsKey, 0, KEY_READ, plugins.put());
    for (DWORD index = 0;; ++index) {
        wchar_t name[256] = {};
        if (RegEnumKeyW(plugins.get(), index, name, 256) != ERROR_SUCCESS) return {};
        wchar_t text[256] = {};
        DWORD size = sizeof(text);
        RegGetValueW(plugins.get(), name, L"FriendlyName", RRF_RT_REG_SZ, nullptr, text, &size);
        if (std::wstring(text) == L"res://OrVaneWmpPlugin.dll/RT_STRING/#102") return name;
    }
}

CLSID registeredClass() {
    CLSID clsid{};
    CLSIDFromString(registeredClassText().c_str(), &clsid);
    return clsid;
}

CComPtr<IWMPPluginUI> createFrom(const Module& module, const CLSID& clsid) {
    CComPtr<IClassFactory> factory;
    CComPtr<IWMPPluginUI> plugin;
    if (SUCCEEDED(module.classObject(clsid, factory)))
        factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI), reinterpret_cast<void**>(&plugin));
    return plugin;
}

void ModuleChild::attach() {
    if (m_window == nullptr) m_window = std::make_unique<PlayerWindow>();
    m_module = std::make_unique<Module>();
    m_plugin = createFrom(*m_module, registeredClass());
    if (m_plugin == nullptr || m_plugin->SetCore(&m_core) != S_OK)
        TerminateProcess(GetCurrentProcess(), 1);
    pumpFor(300);  // the timers' thread and both readers are at work
}

int runChild(const char* suite, const char* name, FakeApp* app, const char* command) {
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string line = "\"" + std::string(program) +
                       "\" --gtest_also_run_disabled_tests --gtest_brief=1 "
                       "--gtest_filter=" +
                       suite + ".DISABLED_" + name;
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process))
        return -2;
    const UniqueHandle handle(process.hProcess);
    const UniqueHandle thread(process.hThread);
    if (command != nullptr && !app->waitForEvents(1, 15000).empty()) app->sendCommand(command);
    if (WaitForSingleObject(handle.get(), 20000) != WAIT_OBJECT_0) {
        TerminateProcess(handle.get(), 99);
        return -1;
    }
    DWORD code = 0;
    GetExitCodeProcess(handle.get(), &code);
    return static_cast<int>(code);
}

}  // namespace orvane::test
