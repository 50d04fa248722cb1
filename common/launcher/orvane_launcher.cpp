#include "common/launcher/orvane_launcher.h"

#include <windows.h>

#include <new>
#include <utility>

#include "common/link/orvane_app_connector.h"
#include "common/names/names.h"
#include "platform/handles.h"
#include "util/files/files.h"
#include "util/log/log.h"
#include "util/registry/registry.h"

namespace orvane {
namespace {

constexpr const char* kGetPath = "OrvaneLauncher::getPath";
constexpr const char* kSettingsKey = names::kSettingsKey.narrow();
constexpr const char* kPathValue = names::kPathValue.narrow();

juce::String installationFolder(bool& found) {
    found = false;
    RegistryUtil registry(1);
    if (!registry.OpenKey(HKEY_LOCAL_MACHINE, kSettingsKey,
                          KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS, nullptr))
        return {};
    const OwnedText folder = registry.GetValue(kPathValue, nullptr);
    found = folder != nullptr;
    return found ? juce::String::fromUTF8(folder.get()) : juce::String();
}

bool isDirectory(const juce::String& path) {
    bool exists = false;
    UtlStat record;
    return utl_stat(path.toRawUTF8(), 1, exists, record, nullptr) && exists &&
           record.isDirectory != 0;
}

}  // namespace

bool OrvaneLauncher::isAppRunning() {
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, names::kRunningMutex.wide()));
    return mutex && GetLastError() == ERROR_ALREADY_EXISTS;
}

juce::String OrvaneLauncher::getPath() {
    syslog(LOG_DEBUG, "%s: looking for OrVane executable path in HKLM\\%s\\%s", kGetPath,
           kSettingsKey, kPathValue);
    bool found = false;
    const juce::String folder = installationFolder(found);
    if (!found) return {};

    juce::String path = folder + "\\" + names::kApplicationFile.narrow();
    bool exists = false;
    if (!utl_file_exists(path.toRawUTF8(), exists, nullptr)) return {};
    // The shell would open a folder of that name in a window, and count that as a start.
    if (!exists || isDirectory(path)) {
        syslog(LOG_NOTICE, "%s: can't find OrVane executable at %s", kGetPath, path.toRawUTF8());
        return {};
    }
    return path;
}

std::unique_ptr<AppConnector> OrvaneLauncher::createConnector(IOrvanePluginMethods* methods,
                                                              KeepAlive keepAlive) {
    try {
        return std::make_unique<OrvaneAppConnector>(methods, std::move(keepAlive));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace orvane
