#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>

namespace orvane::check {

// A value's type and its data, each byte as a character.
using RegistryValue = std::pair<std::uint32_t, std::wstring>;
// By key and name. An existing key has an entry of its own, with the name kKeyItself.
using RegistryValues = std::map<std::pair<std::wstring, std::wstring>, RegistryValue>;

// Saves and restores what a check may change on a machine: the registry keys and values that the
// tests, the plug-in and the application use, and the length of the shared log. A file keeps the
// saved state until it is restored, so that the next check can undo an interrupted one. Any thread,
// one at a time.
class MachineBackup {
public:
    // Reads the machine's state and writes the file; false when the file cannot be written.
    [[nodiscard]] bool save(const std::filesystem::path& file);
    // Reads the file of an interrupted check. False when there is none or it is incomplete; that
    // check had changed nothing yet.
    [[nodiscard]] bool load(const std::filesystem::path& file);
    // Restores what has changed, and deletes the file when nothing differs any more. Returns one
    // line for each thing that could not be restored. Does nothing without save() or load().
    [[nodiscard]] std::string restore();

private:
    void restoreRegistry(std::string& problems) const;
    void restoreLog(std::string& problems) const;

    std::filesystem::path m_file;
    RegistryValues m_values;
    std::filesystem::path m_log;  // empty: the system names no folder for it
    std::int64_t m_logSize = -1;  // -1: there was none
    bool m_logFolderExisted = false;
};

}  // namespace orvane::check
