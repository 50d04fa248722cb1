#pragma once

// Files as replacing one safely takes them, over the C library's streams: on Windows these alone
// say neither who else may have the file nor open a path of more than 260 characters.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
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

// Null, and a sentence with the system's number in `error`, when it cannot be opened.
File openFile(const std::filesystem::path& path, Use use, std::string& error);
// How much there is from the file's position on; it moves to `position` then. -1: not known.
std::int64_t sizeFrom(std::FILE* file, std::int64_t position);
// Puts `source`, closed, in the place of `target` in one step.
bool moveOver(const std::filesystem::path& source, const std::filesystem::path& target);
void removeFile(const std::filesystem::path& path) noexcept;
// One that no other process has.
std::uint32_t processId();

#ifdef _WIN32
// The form of a path that has no length limit.
std::wstring extendedLength(const std::filesystem::path& path);
// Windows refuses to open a read-only file for writing, Wine run by root does not. When it is one
// the thread's last error is ERROR_ACCESS_DENIED.
bool isReadOnly(const std::filesystem::path& path);
#endif

}  // namespace orvane::asf
