#include "common/launcher/program_start.h"

#include <shellapi.h>

#include <cwchar>
#include <string>

#include "util/files/long_names.h"

namespace orvane {
namespace {

// In units, as the system counts: a character may take two.
std::size_t lengthOf(const juce::String& path) { return std::wcslen(path.toWideCharPointer()); }

bool isTooLongForShell(const juce::String& path) { return lengthOf(path) >= MAX_PATH; }

bool startByShell(const juce::String& path, const juce::String& parameters,
                  const juce::String& directory, UniqueHandle& process) {
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof(info);
    // A message box of the shell's would stop the player's start until somebody closes it.
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    info.lpFile = path.toWideCharPointer();
    info.lpParameters = parameters.toWideCharPointer();
    info.lpDirectory = directory.toWideCharPointer();
    info.nShow = SW_SHOW;
    if (!ShellExecuteExW(&info)) return false;
    process.reset(info.hProcess);
    return true;
}

bool createProcess(const std::wstring& file, std::wstring commandLine, const wchar_t* directory,
                   UniqueHandle& process) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOW;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(file.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        directory, &startup, &started))
        return false;
    const UniqueHandle thread(started.hThread);
    process.reset(started.hProcess);
    return true;
}

// The same file under the names that its volume keeps for old programs, when it keeps any.
std::wstring shortNameOf(const std::wstring& file) {
    const DWORD size = GetShortPathNameW(file.c_str(), nullptr, 0);
    std::wstring name(size, L'\0');
    const DWORD length = size == 0 ? 0 : GetShortPathNameW(file.c_str(), name.data(), size);
    name.resize(length < size ? length : 0);
    return name;
}

bool startByLongName(const juce::String& path, const juce::String& parameters,
                     const juce::String& directory, UniqueHandle& process) {
    const OwnedWide longName = utl_get_unicode_filename(path.toRawUTF8(), 1);
    if (longName == nullptr) return false;

    const std::wstring file(longName.get());
    const std::wstring commandLine(("\"" + path + "\" " + parameters).toWideCharPointer());
    const bool canWorkThere = directory.isNotEmpty() && lengthOf(directory) < MAX_PATH - 1;
    const wchar_t* const workingDirectory = canWorkThere ? directory.toWideCharPointer() : nullptr;

    if (createProcess(file, commandLine, workingDirectory, process)) return true;
    // Not every system takes the long name of a program.
    const DWORD error = GetLastError();
    const std::wstring shortName = shortNameOf(file);
    if (!shortName.empty()) return createProcess(shortName, commandLine, workingDirectory, process);
    SetLastError(error);
    return false;
}

}  // namespace

bool startProgram(const juce::String& path, const juce::String& parameters,
                  const juce::String& directory, UniqueHandle& process) {
    return startByShell(path, parameters, directory, process) ||
           (isTooLongForShell(path) && startByLongName(path, parameters, directory, process));
}

}  // namespace orvane
