#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include <string>

namespace orvane {

// Replaces a file in one step: the caller writes a new file beside `target` and calls commit(),
// which moves it over the target. Without a successful commit() the destructor deletes the new file
// and the target stays unchanged.
class FileReplacement {
public:
    explicit FileReplacement(const juce::String& target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // The new file's name, as Windows calls accept it. The caller creates and closes the file.
    [[nodiscard]] const std::wstring& name() const { return m_name; }

    // Moves the new file over the target. MoveFileExW.
    [[nodiscard]] HRESULT commit();

private:
    std::wstring m_target;
    std::wstring m_name;
};

}  // namespace orvane
