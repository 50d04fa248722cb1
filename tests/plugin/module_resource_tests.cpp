// What the file itself carries: exports, imports, texts and version.

#include <windows.h>

#include <array>
#include <cwctype>
#include <set>
#include <string>

#include "tests/plugin/module_fixture.h"

namespace orvane::test {
namespace {

const IMAGE_NT_HEADERS* headersOf(HMODULE module) {
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
}

template <typename T>
const T* tableOf(HMODULE module, int directory) {
    const auto& entry = headersOf(module)->OptionalHeader.DataDirectory[directory];
    return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(module) + entry.VirtualAddress);
}

// One string of a string table in exactly that language.
std::wstring textIn(HMODULE module, WORD language, int id) {
    HRSRC resource =
        FindResourceExW(module, MAKEINTRESOURCEW(6), MAKEINTRESOURCEW(id / 16 + 1), language);
    if (resource == nullptr) return L"no table";
    const auto* text = static_cast<const WCHAR*>(LockResource(LoadResource(module, resource)));
    for (int skipped = id % 16; skipped > 0; --skipped) text += 1 + *text;
    return {text + 1, *text};
}

TEST(ModuleFile, ExportsTheFourCallsUndecoratedAndNothingElse) {
    const Module module;
    const auto* base = reinterpret_cast<const BYTE*>(module.get());
    const auto* exports =
        tableOf<IMAGE_EXPORT_DIRECTORY>(module.get(), IMAGE_DIRECTORY_ENTRY_EXPORT);
    const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    std::set<std::string> found;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        found.insert(reinterpret_cast<const char*>(base + names[i]));
    EXPECT_EQ(found, (std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject",
                                            "DllRegisterServer", "DllUnregisterServer"}));
}

TEST(ModuleFile, NeedsNothingButTheSystem) {
    const Module module;
    const auto* base = reinterpret_cast<const BYTE*>(module.get());
    int count = 0;
    for (const auto* import =
             tableOf<IMAGE_IMPORT_DESCRIPTOR>(module.get(), IMAGE_DIRECTORY_ENTRY_IMPORT);
         import->Name != 0; ++import, ++count) {
        const char* name = reinterpret_cast<const char*>(base + import->Name);
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(GetModuleHandleA(name), path, MAX_PATH);
        std::wstring folder(path);
        for (wchar_t& unit : folder) unit = static_cast<wchar_t>(std::towlower(unit));
        EXPECT_EQ(folder.rfind(L"c:\\windows\\sys", 0), 0U) << name;
        EXPECT_STRCASENE(name, "WMVCORE.dll") << "only loaded when it is needed";
    }
    EXPECT_GT(count, 0);
}

TEST(ModuleFile, NamesItselfInThreeLanguages) {
    const Module module;
    const struct {
        WORD language;
        const wchar_t* description;
    } languages[] = {{0x409, L"OrVane Windows Media Player Plugin"},
                     {0x0A, L"Complemento de OrVane para Windows Media Player"},
                     {0x0C, L"Plug-in OrVane pour Windows Media Player"}};
    for (const auto& [language, description] : languages) {
        EXPECT_EQ(textIn(module.get(), language, 102), L"OrVane") << language;
        EXPECT_EQ(textIn(module.get(), language, 103), description) << language;
    }
}

}  // namespace
}  // namespace orvane::test
