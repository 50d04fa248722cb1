#include "common/launcher/app_launcher.h"

#include <windows.h>

#include <algorithm>

#include "common/launcher/program_start.h"
#include "platform/waiting.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr const char* kLaunchName = "AppLauncher::launch";
constexpr DWORD kStartTimeMs = 3000;
constexpr DWORD kLookMs = 25;

// The text before the last backslash; none for a path that has none or starts with one.
juce::String directoryOf(const juce::String& path) {
    return path.startsWithChar('\\') ? juce::String()
                                     : path.substring(0, juce::jmax(0, path.lastIndexOfChar('\\')));
}

bool endedWell(HANDLE process) {
    DWORD code = 0;
    if (!GetExitCodeProcess(process, &code)) {
        syslog(LOG_ERR, "%s: error getting app exit code.", kLaunchName);
        return false;
    }
    if (code != 0) {
        syslog(LOG_NOTICE, "%s: app code: %d", kLaunchName, static_cast<int>(code));
        return false;
    }
    return true;
}

}  // namespace

bool AppLauncher::isInstalled() { return getPath().isNotEmpty(); }

bool AppLauncher::startedWell(HANDLE process) {
    for (const Deadline deadline(kStartTimeMs); !canBeReached();) {
        const DWORD left = deadline.remaining();
        if (left == 0) return true;
        if (waitServingCalls(process, std::min(left, kLookMs)) != WaitOutcome::timedOut)
            return endedWell(process);
    }
    return true;
}

bool AppLauncher::launch(const juce::String& parameters) {
    const juce::String path = getPath();
    if (path.isEmpty()) {
        syslog(LOG_NOTICE, "%s: failed launching OrVane app (path not found)", kLaunchName);
        return false;
    }

    UniqueHandle process;
    if (!startProgram(path, parameters, directoryOf(path), process)) {
        syslog(LOG_ERR, "%s: failed launching (code=0x%08x)", kLaunchName,
               static_cast<unsigned>(GetLastError()));
        return false;
    }
    return process && startedWell(process.get());
}

}  // namespace orvane
