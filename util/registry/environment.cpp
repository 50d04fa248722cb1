#include "util/registry/environment.h"

#include <windows.h>

#include "util/failed_call/failed_call.h"
#include "util/log/log.h"

namespace orvane {

OwnedWide expand_environment_strings_w(const wchar_t* text, int log) noexcept {
    constexpr const char* self = "expand_environment_strings_w";
    const DWORD needed = ExpandEnvironmentStringsW(text, nullptr, 0);
    if (needed == 0) {
        FailedCall().log(log, LOG_ERR,
                         "%s: ExpandEnvironmentStringsW(%s) for size failed (%d) -- %M", self,
                         text);
        return nullptr;
    }
    const std::size_t units = std::size_t{needed} + 2;
    OwnedWide expanded = allocateWide(units);
    if (!expanded) {
        log_if(log, LOG_ERR, "%s: error allocating %d bytes for UTF-16 string", self,
               static_cast<int>(units * sizeof(wchar_t)));
        return nullptr;
    }
    const DWORD written = ExpandEnvironmentStringsW(text, expanded.get(), needed + 1);
    // More than was offered: another thread has changed a variable, and the text is cut.
    if (written == 0 || written > needed + 1) {
        FailedCall().log(log, LOG_ERR, "%s: ExpandEnvironmentStringsW(%s) failed (%d) -- %M", self,
                         text);
        return nullptr;
    }
    return expanded;
}

}  // namespace orvane
