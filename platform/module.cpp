#include "platform/module.h"

namespace orvane {
namespace {

HMODULE moduleOfThisCode(DWORD flags) noexcept {
    HMODULE module = nullptr;
    const auto* const code = reinterpret_cast<LPCWSTR>(reinterpret_cast<void*>(&moduleOfThisCode));
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, code, &module);
    return module;
}

}  // namespace

HMODULE thisModule() noexcept {
    return moduleOfThisCode(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
}

HMODULE referenceThisModule() noexcept { return moduleOfThisCode(0); }

void pinThisModule() noexcept { moduleOfThisCode(GET_MODULE_HANDLE_EX_FLAG_PIN); }

}  // namespace orvane
