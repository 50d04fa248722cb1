#pragma once

// Opens files for replacing one safely, as streams of the C library. On Windows fopen alone can
// neither set the sharing mode nor open a path of more than 260 characters.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace orvane::asf {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

enum class Use : std::uint8_t {
    read,     // everybody else may go on reading, writing and deleting it
    replace,  // fails when it may not be written or replaced, or somebody else has it open
    create,   // for writing, in the place of an old one
};

// Throws an Error with the system's number when it cannot be opened.
File openFile(const std::filesystem::path& path, Use use);
// How much there is from the file's position on; it moves to `position` then. -1: not known.
std::int64_t sizeFrom(std::FILE* file, std::int64_t position);
// Works with paths of any length in their extended form.
void removeFile(const std::filesystem::path& path) noexcept;

#ifdef _WIN32
// The form of a path that has no length limit.
std::wstring extendedLength(const std::filesystem::path& path);
// Windows refuses to open a read-only file for writing, Wine run by root does not. When it is one
// the thread's last error is ERROR_ACCESS_DENIED.
bool isReadOnly(const std::filesystem::path& path);
#else
inline const std::filesystem::path& extendedLength(const std::filesystem::path& path) {
    return path;
}
#endif

}  // namespace orvane::asf
