// What the file itself carries: what it needs of the system, and its texts.

#include <windows.h>

#include <dbghelp.h>

#include <cwctype>
#include <string>

#include "tests/plugin/module_fixture.h"

namespace orvane::test {
namespace {

TEST(ModuleFile, NeedsNothingButTheSystemAndLeavesThePlayersTimerResolutionAlone) {
    const Module module;
    const auto at = [&](DWORD offset) {
        return reinterpret_cast<const char*>(module.get()) + offset;
    };
    ULONG size = 0;
    const auto* from = static_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
        ImageDirectoryEntryToData(module.get(), TRUE, IMAGE_DIRECTORY_ENTRY_IMPORT, &size));
    ASSERT_NE(from, nullptr);
    int count = 0;
    for (; from->Name != 0; ++from) {
        const char* const name = at(from->Name);
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(GetModuleHandleA(name), path, MAX_PATH);
        std::wstring folder(path);
        for (wchar_t& unit : folder) unit = static_cast<wchar_t>(std::towlower(unit));
        EXPECT_TRUE(folder.starts_with(L"c:\\windows\\sys")) << name;
        EXPECT_STRCASENE(name, "WMVCORE.dll") << "only loaded when it is needed";
        const auto* import =
            reinterpret_cast<const IMAGE_THUNK_DATA32*>(at(from->OriginalFirstThunk));
        for (; import->u1.AddressOfData != 0; ++import, ++count)
            if (!IMAGE_SNAP_BY_ORDINAL32(import->u1.Ordinal)) {
                EXPECT_STRNE(at(import->u1.AddressOfData) + sizeof(WORD), "timeBeginPeriod");
            }
    }
    EXPECT_GT(count, 100);
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

TEST(ModuleFile, NamesItselfInThreeLanguages) {
    const Module module;
    const std::pair<WORD, const wchar_t*> languages[] = {
        {0x409, L"OrVane Windows Media Player Plugin"},
        {0x0A, L"Complemento de OrVane para Windows Media Player"},
        {0x0C, L"Plug-in OrVane pour Windows Media Player"}};
    for (const auto& [language, description] : languages) {
        EXPECT_EQ(textIn(module.get(), language, 102), L"OrVane") << language;
        EXPECT_EQ(textIn(module.get(), language, 103), description) << language;
    }
}

}  // namespace
}  // namespace orvane::test
