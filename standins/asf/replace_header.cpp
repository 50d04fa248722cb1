#include <algorithm>
#include <array>
#include <atomic>
#include <exception>

#include "standins/asf/asf_file.h"
#include "standins/asf/bytes.h"
#include "standins/asf/file_io.h"

namespace orvane::asf {

namespace {

constexpr std::size_t kChunkSize = 256U << 10U;

// The size of the header that `file` begins with.
std::optional<std::uint64_t> headerSize(File& file, std::uint64_t fileSize, std::string& error) {
    std::array<std::uint8_t, 24> start{};
    const auto got = file.read(start, error);
    if (!got) return std::nullopt;
    ByteReader reader(std::span<const std::uint8_t>(start).first(*got));
    if (reader.guid() != kHeaderGuid) {
        error = "The file does not begin with an ASF header.";
        return std::nullopt;
    }
    const std::uint64_t size = reader.u64();
    if (reader.failed() || size < 30 || size > fileSize) {
        error = "The header says that it is larger than the file.";
        return std::nullopt;
    }
    if (size > Header::kMaximumSize) {
        error = "The header is too large.";
        return std::nullopt;
    }
    return size;
}

// A new file beside the one that it is to replace; gone again unless it was put in its place.
class TemporaryFile {
public:
    static std::optional<TemporaryFile> createBeside(const std::filesystem::path& target,
                                                     std::string& error) {
        static std::atomic<unsigned> counter{0};
        for (int attempt = 0; attempt < 100; ++attempt) {
            // Short, so that it fits where the track's own name reaches the limit of a name.
            const std::string name = ".orvane-" + std::to_string(processId()) + "-" +
                                     std::to_string(counter.fetch_add(1)) + ".tmp";
            std::filesystem::path path = target;
            path.replace_filename(name);
            bool exists = false;
            if (auto file = File::createNew(path, exists, error))
                return TemporaryFile(std::move(path), std::move(*file));
            if (!exists) break;
        }
        return std::nullopt;
    }

    TemporaryFile(TemporaryFile&& other) noexcept
        : m_path(std::move(other.m_path)), m_file(std::move(other.m_file)) {
        other.m_path.clear();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    ~TemporaryFile() {
        m_file.reset();
        if (!m_path.empty()) removeFile(m_path);
    }

    File& file() { return *m_file; }

    bool replace(const std::filesystem::path& target, std::string& error) {
        m_file.reset();
        if (!replaceFile(m_path, target, error)) return false;
        m_path.clear();
        return true;
    }

private:
    TemporaryFile(std::filesystem::path path, File file)
        : m_path(std::move(path)), m_file(std::move(file)) {}

    std::filesystem::path m_path;
    std::optional<File> m_file;
};

// Writes until the disk, or the test that plays one, is full.
class LimitedWriter {
public:
    LimitedWriter(File& file, const ReplaceFault& fault)
        : m_file(file), m_left(fault.diskFullAfter) {}

    bool write(std::span<const std::uint8_t> bytes, std::string& error) {
        if (!m_left) return m_file.write(bytes, error);
        const auto part =
            bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), *m_left)));
        *m_left -= part.size();
        if (!m_file.write(part, error)) return false;
        if (part.size() == bytes.size()) return true;
        error = "The disk is full.";
        return false;
    }

private:
    File& m_file;
    std::optional<std::uint64_t> m_left;
};

bool copyRest(File& from, std::uint64_t expected, LimitedWriter& to, std::string& error) {
    Bytes chunk(kChunkSize);
    while (true) {
        const auto got = from.read(chunk, error);
        if (!got) return false;
        if (*got == 0) break;
        if (*got > expected) break;  // it grew meanwhile
        expected -= *got;
        if (!to.write(std::span(chunk).first(*got), error)) return false;
    }
    if (expected == 0) return true;
    error = "The file changed while it was read.";
    return false;
}

std::optional<Header> readHeaderUnguarded(const std::filesystem::path& path, std::string& error) {
    auto file = File::openForReading(path, error);
    if (!file) return std::nullopt;
    const auto fileSize = file->size(error);
    if (!fileSize) return std::nullopt;
    const auto size = headerSize(*file, *fileSize, error);
    if (!size || !file->seek(0, error)) return std::nullopt;
    Bytes bytes(static_cast<std::size_t>(*size));
    const auto got = file->read(bytes, error);
    if (!got) return std::nullopt;
    bytes.resize(*got);
    return Header::parse(bytes, error);
}

bool replaceHeaderUnguarded(const std::filesystem::path& path, const Header& header,
                            std::string& error, const ReplaceFault& fault) {
    auto old = File::openExclusively(path, error);
    if (!old) return false;
    const auto oldSize = old->size(error);
    if (!oldSize) return false;
    const auto oldHeaderSize = headerSize(*old, *oldSize, error);
    if (!oldHeaderSize) return false;
    const std::uint64_t rest = *oldSize - *oldHeaderSize;
    const auto newHeader = header.serialise(rest, error);
    if (!newHeader || !old->seek(*oldHeaderSize, error)) return false;

    auto temporary = TemporaryFile::createBeside(path, error);
    if (!temporary) return false;
    LimitedWriter writer(temporary->file(), fault);
    if (!writer.write(*newHeader, error) || !copyRest(*old, rest, writer, error)) return false;
    if (!temporary->file().flush(error)) return false;
    // The system replaces no file that somebody, we included, has open.
    old.reset();
    return temporary->replace(path, error);
}

}  // namespace

std::optional<Header> readHeader(const std::filesystem::path& path, std::string& error) {
    try {
        return readHeaderUnguarded(path, error);
    } catch (const std::exception&) {
        error = "There is not enough memory to read the header.";
        return std::nullopt;
    }
}

bool replaceHeader(const std::filesystem::path& path, const Header& header, std::string& error,
                   const ReplaceFault& fault) {
    try {
        return replaceHeaderUnguarded(path, header, error, fault);
    } catch (const std::exception&) {
        error = "There is not enough memory to write the header.";
        return false;
    }
}

}  // namespace orvane::asf
