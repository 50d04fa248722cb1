// What the module writes into the registry and takes out again.

#include <set>

#include "tests/plugin/module_fixture.h"

namespace orvane::test {
namespace {

using Entries = std::set<std::wstring>;

const std::wstring kPlugins = PLUGIN_INSTALLREGKEY;
const std::wstring kOurEntry = kPlugins + L"\\" + kClassId;
const std::wstring kOurClass = std::wstring(L"CLSID\\") + kClassId;

UniqueRegKey makeKey(HKEY root, const std::wstring& path, DWORD options = 0) {
    UniqueRegKey key;
    EXPECT_EQ(RegCreateKeyExW(root, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS, nullptr,
                              key.put(), nullptr),
              ERROR_SUCCESS);
    return key;
}

// All that a key holds, as "name=value" and "key\name=value"; a key itself as "key\". Nothing: the
// key is not there.
Entries entriesOf(HKEY root, const std::wstring& path) {
    UniqueRegKey key;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return {};
    Entries entries{L"\\"};
    wchar_t name[256];
    for (DWORD i = 0; RegEnumKeyW(key.get(), i, name, 256) == ERROR_SUCCESS; ++i)
        for (const auto& entry : entriesOf(key.get(), name)) entries.insert(name + entry);
    DWORD length = 256;
    for (DWORD i = 0; RegEnumValueW(key.get(), i, name, &length, nullptr, nullptr, nullptr,
                                    nullptr) == ERROR_SUCCESS;
         ++i, length = 256) {
        wchar_t value[1024] = {};
        DWORD number = 0;
        DWORD size = sizeof(value);
        DWORD numberSize = sizeof(number);
        const bool isNumber = RegGetValueW(key.get(), nullptr, name, RRF_RT_REG_DWORD, nullptr,
                                           &number, &numberSize) == ERROR_SUCCESS;
        RegGetValueW(key.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, value, &size);
        entries.insert(L"\\" + (name + (L"=" + (isNumber ? std::to_wstring(number) : value))));
    }
    return entries;
}

class Registration : public ModuleTest {
protected:
    [[nodiscard]] HRESULT add() const { return m_module.call("DllRegisterServer"); }
    [[nodiscard]] HRESULT remove() const { return m_module.call("DllUnregisterServer"); }

    const Module m_module;
};

TEST_F(Registration, ComesAndGoesWithoutTouchingItsNeighboursAndTellsRunningPlayers) {
    int told = 0;
    m_window.onMessage = [&](UINT message, WPARAM wParam, LPARAM lParam) {
        const UINT notice = RegisterWindowMessageA("WMPlayer_PluginAddRemove");
        if (message == notice && wParam == 0 && lParam == 0) ++told;
        return std::nullopt;
    };
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(m_module.get(), path, MAX_PATH);
    const Entries inClass{L"\\", L"\\=OrVaneWmpPlugin Class", L"InprocServer32\\",
                          std::wstring(L"InprocServer32\\=") + path,
                          L"InprocServer32\\ThreadingModel=Apartment"};
    const Entries inEntry{L"\\", L"\\FriendlyName=res://OrVaneWmpPlugin.dll/RT_STRING/#102",
                          L"\\Description=res://OrVaneWmpPlugin.dll/RT_STRING/#103",
                          L"\\Capabilities=" + std::to_wstring(0x58000001)};

    EXPECT_EQ(remove(), S_OK);
    makeKey(HKEY_LOCAL_MACHINE, kPlugins + L"\\{neighbour}");
    makeKey(HKEY_CLASSES_ROOT, L"CLSID\\{neighbour}");
    const Entries before = entriesOf(HKEY_LOCAL_MACHINE, kPlugins);
    // What somebody added to our keys goes with the next registration.
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(add(), S_OK);
        EXPECT_EQ(entriesOf(HKEY_CLASSES_ROOT, kOurClass), inClass);
        EXPECT_EQ(entriesOf(HKEY_LOCAL_MACHINE, kOurEntry), inEntry);
        makeKey(HKEY_CLASSES_ROOT, kOurClass + L"\\TypeLib\\deeper");
        makeKey(HKEY_LOCAL_MACHINE, kOurEntry + L"\\deeper");
    }
    EXPECT_EQ(remove(), S_OK);
    EXPECT_EQ(remove(), S_OK);
    EXPECT_EQ(entriesOf(HKEY_LOCAL_MACHINE, kPlugins), before);
    EXPECT_EQ(entriesOf(HKEY_CLASSES_ROOT, kOurClass), Entries());
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, L"CLSID\\{neighbour}"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(HKEY_LOCAL_MACHINE, (kPlugins + L"\\{neighbour}").c_str()),
              ERROR_SUCCESS);
    EXPECT_TRUE(pumpUntil([&] { return told == 5; })) << told;
}

TEST_F(Registration, RefusedForOnePlaceChangesNothingInTheOther) {
    ASSERT_EQ(remove(), S_OK);
    // A place that lasts until the system stops refuses keys that last longer.
    const UniqueRegKey moved = makeKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OrVaneMoved");
    RegCopyTreeW(HKEY_LOCAL_MACHINE, kPlugins.c_str(), moved.get());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPlugins.c_str());
    makeKey(HKEY_LOCAL_MACHINE, kPlugins, REG_OPTION_VOLATILE);

    EXPECT_EQ(add(), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(entriesOf(HKEY_CLASSES_ROOT, kOurClass), Entries()) << "nothing was there before";
    makeKey(HKEY_CLASSES_ROOT, kOurClass + L"\\InprocServer32");
    const Entries old = entriesOf(HKEY_CLASSES_ROOT, kOurClass);
    EXPECT_EQ(add(), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(entriesOf(HKEY_CLASSES_ROOT, kOurClass), old);

    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPlugins.c_str());
    RegCopyTreeW(moved.get(), nullptr, makeKey(HKEY_LOCAL_MACHINE, kPlugins).get());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OrVaneMoved");
    EXPECT_EQ(remove(), S_OK);
}

}  // namespace
}  // namespace orvane::test
