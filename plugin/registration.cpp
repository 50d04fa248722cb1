#include "plugin/registration.h"

#include <string>

#include "common/names/names.h"
#include "platform/handles.h"
#include "platform/module.h"
#include "plugin/wmp_plugin.h"

namespace orvane {
namespace {

constexpr const wchar_t* kClassesKey = L"CLSID";
constexpr const wchar_t* kClassId = names::kClassId.wide();
constexpr DWORD kCapabilities = PLUGIN_TYPE_BACKGROUND | PLUGIN_FLAGS_ACCEPTSPLAYLISTS |
                                PLUGIN_FLAGS_ACCEPTSMEDIA | PLUGIN_FLAGS_INSTALLAUTORUN;
constexpr std::size_t kLongestPath = 32767;  // characters, the system's limit

// Full path of the module that holds this code; empty when the system does not tell.
std::wstring modulePath() {
    HMODULE const module = thisModule();
    if (module == nullptr) return {};
    for (std::size_t size = MAX_PATH;; size *= 2) {
        std::wstring path(size, L'\0');
        const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(size));
        if (length < size) return path.substr(0, length);
        if (size > kLongestPath) return {};
    }
}

// A chain of registry calls: the first failure is kept and the rest is left out.
class RegistryWriter {
public:
    [[nodiscard]] HRESULT result() const { return HRESULT_FROM_WIN32(m_result); }
    [[nodiscard]] bool failed() const { return m_result != ERROR_SUCCESS; }

    // Opens the key, made with its parents where missing; `made` tells whether it was.
    UniqueRegKey create(HKEY parent, const std::wstring& path, bool* made = nullptr) {
        UniqueRegKey key;
        DWORD disposition = 0;
        if (!failed())
            note(RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                 key.put(), &disposition));
        if (made != nullptr) *made = disposition == REG_CREATED_NEW_KEY;
        return key;
    }
    // Opens the key if it is there.
    UniqueRegKey openExisting(HKEY parent, const wchar_t* path) {
        UniqueRegKey key;
        if (failed()) return key;
        const LSTATUS result = RegOpenKeyExW(parent, path, 0, KEY_ALL_ACCESS, key.put());
        if (result != ERROR_FILE_NOT_FOUND) note(result);
        return key;
    }
    void removeTree(const UniqueRegKey& parent, const std::wstring& name) {
        if (failed()) return;
        if (name.empty()) return note(ERROR_INVALID_PARAMETER);  // it would remove the parent's own
        const LSTATUS result = RegDeleteTreeW(parent.get(), name.c_str());
        if (result != ERROR_FILE_NOT_FOUND) note(result);
    }
    // All that is in the key; the key itself stays.
    void clear(const UniqueRegKey& key) {
        if (!failed()) note(RegDeleteTreeW(key.get(), nullptr));
    }
    // `name` null: the key's default value.
    void setText(const UniqueRegKey& key, const wchar_t* name, const std::wstring& text) {
        if (!failed())
            note(RegSetValueExW(key.get(), name, 0, REG_SZ,
                                reinterpret_cast<const BYTE*>(text.c_str()),
                                static_cast<DWORD>(text.size() + 1) * sizeof(wchar_t)));
    }
    void setNumber(const UniqueRegKey& key, const wchar_t* name, DWORD number) {
        if (!failed())
            note(RegSetValueExW(key.get(), name, 0, REG_DWORD,
                                reinterpret_cast<const BYTE*>(&number), sizeof(number)));
    }

private:
    void note(LSTATUS result) { m_result = static_cast<DWORD>(result); }

    DWORD m_result = ERROR_SUCCESS;
};

}  // namespace

HRESULT registerPlugin() {
    const std::wstring module = modulePath();
    if (module.empty()) return HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND);
    RegistryWriter registry;

    // Both entries are opened before either is changed: who may write only one of the two places
    // keeps what was registered before.
    bool classIsNew = false;
    const UniqueRegKey classes = registry.create(HKEY_CLASSES_ROOT, kClassesKey);
    UniqueRegKey ourClass = registry.create(classes.get(), kClassId, &classIsNew);
    const UniqueRegKey plugins = registry.create(HKEY_LOCAL_MACHINE, PLUGIN_INSTALLREGKEY);
    const UniqueRegKey entry = registry.create(plugins.get(), kClassId);
    if (registry.failed()) {
        ourClass.reset();
        if (classIsNew) RegDeleteKeyW(classes.get(), kClassId);
        return registry.result();
    }

    registry.clear(ourClass);
    registry.setText(ourClass, nullptr, L"OrVaneWmpPlugin Class");
    const UniqueRegKey server = registry.create(ourClass.get(), L"InprocServer32");
    registry.setText(server, nullptr, module);
    registry.setText(server, L"ThreadingModel", L"Apartment");

    // The player finds the texts in the resources of the module, by its file name.
    registry.clear(entry);
    registry.setText(entry, PLUGIN_INSTALLREGKEY_FRIENDLYNAME,
                     L"res://OrVaneWmpPlugin.dll/RT_STRING/#102");
    registry.setText(entry, PLUGIN_INSTALLREGKEY_DESCRIPTION,
                     L"res://OrVaneWmpPlugin.dll/RT_STRING/#103");
    registry.setNumber(entry, PLUGIN_INSTALLREGKEY_CAPABILITIES, kCapabilities);
    return registry.result();
}

HRESULT unregisterPlugin() {
    RegistryWriter registry;
    if (const auto classes = registry.openExisting(HKEY_CLASSES_ROOT, kClassesKey))
        registry.removeTree(classes, kClassId);
    if (const auto plugins = registry.openExisting(HKEY_LOCAL_MACHINE, PLUGIN_INSTALLREGKEY))
        registry.removeTree(plugins, kClassId);
    return registry.result();
}

void announcePluginChange() {
    const UINT message = RegisterWindowMessageA(PLUGIN_ADD_REMOVE_MESSAGE);
    if (message != 0) PostMessageW(HWND_BROADCAST, message, 0, 0);
}

}  // namespace orvane
