#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include <string>

namespace orvane {

// A new file beside `target`, under a name of its own, that takes the target's place when it is
// whole. Unless that has happened the new file is deleted in the end, and what was there stays.
class FileReplacement {
public:
    explicit FileReplacement(const juce::String& target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // For Windows (media/file_name.h). The file is the caller's to make, and to close.
    [[nodiscard]] const std::wstring& name() const { return m_name; }

    // Moves the new file over the target. MoveFileExW.
    [[nodiscard]] HRESULT commit();

private:
    std::wstring m_target;
    std::wstring m_name;
};

}  // namespace orvane
