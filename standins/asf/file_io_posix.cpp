#include "standins/asf/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace orvane::asf {

namespace {

std::string failure(const char* call) {
    const int code = errno;
    return std::string(call) + " failed: " + std::system_category().message(code) + ".";
}

}  // namespace

void File::close() noexcept {
    if (m_native != none) ::close(static_cast<int>(std::exchange(m_native, none)));
}

std::optional<File> File::openForReading(const std::filesystem::path& path, std::string& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) return File(fd);
    error = failure("open");
    return std::nullopt;
}

std::optional<File> File::openExclusively(const std::filesystem::path& path, std::string& error) {
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd >= 0) return File(fd);
    error = failure("open");
    return std::nullopt;
}

std::optional<File> File::createNew(const std::filesystem::path& path, bool& exists,
                                    std::string& error) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    exists = fd < 0 && errno == EEXIST;
    if (fd >= 0) return File(fd);
    error = failure("open");
    return std::nullopt;
}

std::optional<std::uint64_t> File::size(std::string& error) const {
    struct stat status {};
    if (::fstat(static_cast<int>(m_native), &status) != 0) {
        error = failure("fstat");
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::size_t> File::read(std::span<std::uint8_t> buffer, std::string& error) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t got =
            ::read(static_cast<int>(m_native), buffer.data() + done, buffer.size() - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            error = failure("read");
            return std::nullopt;
        }
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

bool File::write(std::span<const std::uint8_t> bytes, std::string& error) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(static_cast<int>(m_native), bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) {
            error = failure("write");
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(put));
    }
    return true;
}

bool File::seek(std::uint64_t position, std::string& error) {
    if (::lseek(static_cast<int>(m_native), static_cast<off_t>(position), SEEK_SET) >= 0)
        return true;
    error = failure("lseek");
    return false;
}

bool File::flush(std::string& error) {
    if (::fsync(static_cast<int>(m_native)) == 0) return true;
    error = failure("fsync");
    return false;
}

bool replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                 std::string& error) {
    struct stat status {};
    if (::stat(target.c_str(), &status) == 0) ::chmod(source.c_str(), status.st_mode & 07777U);
    if (std::rename(source.c_str(), target.c_str()) == 0) return true;
    error = failure("rename");
    return false;
}

void removeFile(const std::filesystem::path& path) noexcept { ::unlink(path.c_str()); }

std::uint32_t processId() { return static_cast<std::uint32_t>(::getpid()); }

}  // namespace orvane::asf
