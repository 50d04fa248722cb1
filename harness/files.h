#pragma once

// Creates, reads and deletes files and folders with any name, also longer than 260 characters,
// without using the code under test. Failures throw std::system_error.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::test {

using Bytes = std::vector<std::uint8_t>;

[[nodiscard]] std::wstring wide(const std::string& utf8);
[[nodiscard]] std::string utf8(const std::filesystem::path& path);

// The extended-length form of an absolute path.
[[nodiscard]] std::filesystem::path openable(const std::filesystem::path& path);

// Empty for a file that cannot be read.
[[nodiscard]] Bytes contentOf(const std::filesystem::path& path);
[[nodiscard]] std::string readText(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view content);
void writeFile(const std::filesystem::path& path, const Bytes& content);

[[nodiscard]] bool isFolder(const std::filesystem::path& path);
// With its parents.
void makeFolder(const std::filesystem::path& path);
// Deletes a folder with its content, also read-only files. std::filesystem::remove_all fails for
// long names.
void removeFolder(const std::filesystem::path& path);

// An empty folder with a name outside ASCII, deleted with all its content by the destructor.
class TempFolder {
public:
    TempFolder();
    ~TempFolder() { removeFolder(m_path); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] std::filesystem::path path(const std::wstring& name = {}) const {
        return name.empty() ? m_path : m_path / name;
    }
    // The same in UTF-8.
    [[nodiscard]] std::string operator/(const std::string& name) const {
        return utf8(m_path) + "\\" + name;
    }

private:
    std::filesystem::path m_path;
};

}  // namespace orvane::test
