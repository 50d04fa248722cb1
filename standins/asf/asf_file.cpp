#include "standins/asf/asf_file.h"

#include <algorithm>
#include <atomic>
#include <exception>

#include "standins/asf/bytes.h"
#include "standins/asf/file.h"

namespace orvane::asf {

namespace {

std::nullopt_t fail(std::string& error, const char* sentence) {
    error = sentence;
    return std::nullopt;
}

// The size of the header that `file` begins with; the file's position is anywhere then.
std::optional<std::int64_t> headerSize(std::FILE* file, std::string& error) {
    const std::int64_t fileSize = sizeFrom(file, 0);
    Bytes start(24);
    start.resize(std::fread(start.data(), 1, start.size(), file));
    ByteReader reader(start);
    if (reader.guid() != kHeaderGuid)
        return fail(error, "The file does not begin with an ASF header.");
    const std::uint64_t size = reader.u64();
    if (reader.failed() || size < 30 || fileSize < 0 || size > static_cast<std::uint64_t>(fileSize))
        return fail(error, "The header says that it is larger than the file.");
    if (size > Header::kMaximumSize) return fail(error, "The header is too large.");
    return static_cast<std::int64_t>(size);
}

// A new file beside the one that it is to replace; gone again unless it was put in its place.
class TemporaryFile {
public:
    TemporaryFile(const std::filesystem::path& target, std::optional<std::uint64_t> room,
                  std::string& error)
        : m_room(room) {
        static std::atomic<unsigned> counter{0};
        // Short, so that it fits where the track's own name reaches the limit of a name.
        m_path = target;
        m_path.replace_filename(".orvane-" + std::to_string(processId()) + "-" +
                                std::to_string(counter++) + ".tmp");
        m_file = openFile(m_path, Use::create, error);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        m_file.reset();
        removeFile(m_path);
    }

    explicit operator bool() const { return m_file != nullptr; }

    bool write(std::span<const std::uint8_t> bytes) {
        const std::size_t part = static_cast<std::size_t>(
            std::min<std::uint64_t>(bytes.size(), m_room.value_or(bytes.size())));
        if (m_room) *m_room -= part;
        return std::fwrite(bytes.data(), 1, part, m_file.get()) == bytes.size();
    }
    // The system replaces no file that somebody, we included, has open.
    bool replace(const std::filesystem::path& target) {
        return std::fclose(m_file.release()) == 0 && moveOver(m_path, target);
    }

private:
    std::filesystem::path m_path;
    File m_file;
    std::optional<std::uint64_t> m_room;  // bytes until the disk plays being full
};

bool copyRest(std::FILE* from, std::int64_t size, TemporaryFile& to) {
    Bytes chunk(256U << 10U);
    while (size > 0) {
        const auto wanted = static_cast<std::size_t>(std::min(std::int64_t{256} << 10U, size));
        const std::size_t got = std::fread(chunk.data(), 1, wanted, from);
        if (got == 0 || !to.write(std::span(chunk).first(got))) return false;
        size -= static_cast<std::int64_t>(got);
    }
    return true;
}

std::optional<Header> read(const std::filesystem::path& path, std::string& error) {
    const File file = openFile(path, Use::read, error);
    const auto size = file ? headerSize(file.get(), error) : std::nullopt;
    if (!size) return std::nullopt;
    Bytes bytes(static_cast<std::size_t>(*size));
    sizeFrom(file.get(), 0);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    return Header::parse(bytes, error);
}

bool replace(const std::filesystem::path& path, const Header& header, std::string& error,
             std::optional<std::uint64_t> diskFullAfter) {
    File old = openFile(path, Use::replace, error);
    const auto oldHeader = old ? headerSize(old.get(), error) : std::nullopt;
    if (!oldHeader) return false;
    const std::int64_t rest = sizeFrom(old.get(), *oldHeader);
    const auto newHeader = header.serialise(static_cast<std::uint64_t>(rest), error);
    if (!newHeader) return false;
    TemporaryFile temporary(path, diskFullAfter, error);
    if (!temporary) return false;
    error = "The file cannot be written.";
    if (rest < 0 || !temporary.write(*newHeader) || !copyRest(old.get(), rest, temporary))
        return false;
    old.reset();
    return temporary.replace(path);
}

}  // namespace

std::optional<Header> readHeader(const std::filesystem::path& path, std::string& error) {
    try {
        return read(path, error);
    } catch (const std::exception&) {
        return fail(error, "There is not enough memory to read the header.");
    }
}

bool replaceHeader(const std::filesystem::path& path, const Header& header, std::string& error,
                   std::optional<std::uint64_t> diskFullAfter) {
    try {
        return replace(path, header, error, diskFullAfter);
    } catch (const std::exception&) {
        error = "There is not enough memory to write the header.";
        return false;
    }
}

}  // namespace orvane::asf
