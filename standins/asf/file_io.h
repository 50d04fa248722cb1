#pragma once

// The few file operations that replacing a file safely takes, on Windows and elsewhere. Failures
// are sentences that name the call and the system's reason. Paths may be longer than 260
// characters. Objects are not shared between threads.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace orvane::asf {

class File {
public:
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    File(File&& other) noexcept : m_native(std::exchange(other.m_native, none)) {}
    File& operator=(File&&) = delete;
    ~File() { close(); }

    // Everybody else may go on reading, writing and deleting it.
    static std::optional<File> openForReading(const std::filesystem::path& path,
                                              std::string& error);
    // Fails when the file may not be written or somebody else has it open; while we have it open
    // nobody else can write it.
    static std::optional<File> openExclusively(const std::filesystem::path& path,
                                               std::string& error);
    // Fails when there is one of that name; `exists` says that this was why.
    static std::optional<File> createNew(const std::filesystem::path& path, bool& exists,
                                         std::string& error);

    [[nodiscard]] std::optional<std::uint64_t> size(std::string& error) const;
    // Reads at the file's position as much as there is, up to the buffer's size.
    std::optional<std::size_t> read(std::span<std::uint8_t> buffer, std::string& error);
    // Writes all of it.
    bool write(std::span<const std::uint8_t> bytes, std::string& error);
    bool seek(std::uint64_t position, std::string& error);
    // Down to the disk.
    bool flush(std::string& error);

private:
    using Native = std::intptr_t;
    static constexpr Native none = -1;
    explicit File(Native native) : m_native(native) {}
    void close() noexcept;

    Native m_native = none;
};

// Puts `source` in the place of `target`, in one step.
bool replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                 std::string& error);
void removeFile(const std::filesystem::path& path) noexcept;
std::uint32_t processId();
#ifdef _WIN32
// The form of a path that has no length limit.
std::wstring extendedLength(const std::filesystem::path& path);
// Windows refuses to open a read-only file for writing, Wine run by root does not. When it is one
// the thread's last error is ERROR_ACCESS_DENIED.
bool isReadOnly(const std::filesystem::path& path);
#endif

}  // namespace orvane::asf
