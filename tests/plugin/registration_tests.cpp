// What the module writes into the registry and takes out again.

#include <optional>

#include "tests/plugin/fake_app.h"
#include "tests/plugin/module_fixture.h"

namespace orvane::test {
namespace {

std::optional<std::wstring> textAt(HKEY root, const std::wstring& key, const wchar_t* name) {
    wchar_t text[1024] = {};
    DWORD size = sizeof(text);
    if (RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return text;
}

struct Contents {
    DWORD keys = 0;
    DWORD values = 0;
    bool operator==(const Contents&) const = default;
};

std::optional<Contents> contentsOf(HKEY root, const std::wstring& path) {
    UniqueRegKey key;
    Contents contents;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS)
        return std::nullopt;
    RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &contents.keys, nullptr, nullptr,
                     &contents.values, nullptr, nullptr, nullptr, nullptr);
    return contents;
}

void expectRegistered(const std::wstring& classId, const std::wstring& path) {
    const std::wstring ourClass = L"CLSID\\" + classId;
    EXPECT_EQ(textAt(HKEY_CLASSES_ROOT, ourClass, nullptr), L"OrVaneWmpPlugin Class");
    EXPECT_EQ(textAt(HKEY_CLASSES_ROOT, ourClass + L"\\InprocServer32", nullptr), path);
    EXPECT_EQ(textAt(HKEY_CLASSES_ROOT, ourClass + L"\\InprocServer32", L"ThreadingModel"),
              L"Apartment");
    EXPECT_EQ(contentsOf(HKEY_CLASSES_ROOT, ourClass), (Contents{1, 1}));

    const std::wstring entry = kPluginsKey + (L"\\" + classId);
    EXPECT_EQ(textAt(HKEY_LOCAL_MACHINE, entry, L"FriendlyName"),
              L"res://OrVaneWmpPlugin.dll/RT_STRING/#102");
    EXPECT_EQ(textAt(HKEY_LOCAL_MACHINE, entry, L"Description"),
              L"res://OrVaneWmpPlugin.dll/RT_STRING/#103");
    DWORD capabilities = 0;
    DWORD size = sizeof(capabilities);
    EXPECT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, entry.c_str(), L"Capabilities", RRF_RT_REG_DWORD,
                           nullptr, &capabilities, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(capabilities, 0x58000001U);
    EXPECT_EQ(contentsOf(HKEY_LOCAL_MACHINE, entry), (Contents{0, 3}));
}

TEST(Registration, ComesAndGoesWithoutTouchingItsNeighbours) {
    const Module module;
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(module.get(), path, MAX_PATH);

    EXPECT_EQ(module.call("DllUnregisterServer"), S_OK);
    UniqueRegKey neighbour;
    const std::wstring other = kPluginsKey + std::wstring(L"\\{neighbour}");
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, other.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                    neighbour.put(), nullptr);
    const auto before = contentsOf(HKEY_LOCAL_MACHINE, kPluginsKey);
    const auto classesBefore = contentsOf(HKEY_CLASSES_ROOT, L"CLSID");
    ASSERT_TRUE(before && classesBefore);

    ASSERT_EQ(module.call("DllRegisterServer"), S_OK);
    const std::wstring classId = registeredClassText();
    ASSERT_EQ(classId.size(), 38U);
    expectRegistered(classId, path);

    // What somebody added to our keys goes with the next registration.
    UniqueRegKey stray;
    RegCreateKeyExW(HKEY_CLASSES_ROOT, (L"CLSID\\" + classId + L"\\TypeLib\\deeper").c_str(), 0,
                    nullptr, 0, KEY_ALL_ACCESS, nullptr, stray.put(), nullptr);
    stray.reset();
    EXPECT_EQ(contentsOf(HKEY_CLASSES_ROOT, L"CLSID\\" + classId), (Contents{2, 1}));
    ASSERT_EQ(module.call("DllRegisterServer"), S_OK);
    expectRegistered(classId, path);
    EXPECT_EQ(contentsOf(HKEY_LOCAL_MACHINE, kPluginsKey)->keys, before->keys + 1);

    EXPECT_EQ(module.call("DllUnregisterServer"), S_OK);
    EXPECT_EQ(module.call("DllUnregisterServer"), S_OK);
    EXPECT_EQ(contentsOf(HKEY_LOCAL_MACHINE, kPluginsKey), before);
    EXPECT_EQ(contentsOf(HKEY_CLASSES_ROOT, L"CLSID"), classesBefore);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, other.c_str());
}

TEST(Registration, RefusedForOnePlaceChangesNothingInTheOther) {
    const Module module;
    ASSERT_EQ(module.call("DllRegisterServer"), S_OK);
    const std::wstring ourClass = L"CLSID\\" + registeredClassText();
    ASSERT_EQ(module.call("DllUnregisterServer"), S_OK);

    // A place that lasts until the system stops refuses keys that last longer.
    UniqueRegKey moved;
    UniqueRegKey refusing;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OrVaneMoved", 0, nullptr, 0, KEY_ALL_ACCESS,
                    nullptr, moved.put(), nullptr);
    RegCopyTreeW(HKEY_LOCAL_MACHINE, kPluginsKey, moved.get());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPluginsKey);
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kPluginsKey, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, refusing.put(), nullptr),
              ERROR_SUCCESS);

    EXPECT_EQ(module.call("DllRegisterServer"), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_FALSE(contentsOf(HKEY_CLASSES_ROOT, ourClass)) << "nothing was there before";
    UniqueRegKey server;
    RegCreateKeyExW(HKEY_CLASSES_ROOT, (ourClass + L"\\InprocServer32").c_str(), 0, nullptr, 0,
                    KEY_ALL_ACCESS, nullptr, server.put(), nullptr);
    RegSetValueExW(server.get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(L"C:\\old.dll"),
                   22);
    EXPECT_EQ(module.call("DllRegisterServer"), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(textAt(HKEY_CLASSES_ROOT, ourClass + L"\\InprocServer32", nullptr), L"C:\\old.dll");

    refusing.reset();
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPluginsKey);
    UniqueRegKey back;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, kPluginsKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                    back.put(), nullptr);
    RegCopyTreeW(moved.get(), nullptr, back.get());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OrVaneMoved");
    server.reset();
    EXPECT_EQ(module.call("DllUnregisterServer"), S_OK);
}

int noticesHeard = 0;

LRESULT CALLBACK countNotices(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static const UINT notice = RegisterWindowMessageA("WMPlayer_PluginAddRemove");
    if (message == notice && wParam == 0 && lParam == 0) ++noticesHeard;
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(Registration, RunningPlayersAreToldEachTime) {
    const PlayerWindow window;
    SetWindowLongW(window.handle(), GWL_WNDPROC,
                   static_cast<LONG>(reinterpret_cast<LONG_PTR>(&countNotices)));
    const Module module;
    EXPECT_EQ(module.call("DllRegisterServer"), S_OK);
    EXPECT_TRUE(pumpUntil([] { return noticesHeard == 1; }));
    EXPECT_EQ(module.call("DllUnregisterServer"), S_OK);
    EXPECT_TRUE(pumpUntil([] { return noticesHeard == 2; }));
}

}  // namespace
}  // namespace orvane::test
