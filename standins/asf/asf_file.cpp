#include "standins/asf/asf_file.h"

#include <algorithm>
#include <random>

#include "standins/asf/file.h"
#include "standins/asf/header_objects.h"

namespace orvane::asf {

namespace {

// The size of the header that `file` begins with; the file's position is anywhere then.
std::size_t headerSize(std::FILE* file) {
    const std::int64_t fileSize = sizeFrom(file, 0);
    Bytes start(kObjectPrefix);
    start.resize(std::fread(start.data(), 1, start.size(), file));
    ByteReader reader(start);
    if (reader.guid() != kHeaderGuid) throw Error("The file does not begin with an ASF header.");
    const std::uint64_t size = reader.u64();
    if (size < 30 || fileSize < 0 || size > static_cast<std::uint64_t>(fileSize))
        throw Error("The header says that it is larger than the file.");
    if (size > Header::kMaximumSize) throw Error("The header is too large.");
    return static_cast<std::size_t>(size);
}

// A new file beside the one that it is to replace; removed unless it was put in its place.
class TemporaryFile {
public:
    // The name is short, so that it fits where the track's own name reaches the limit of a name.
    TemporaryFile(const std::filesystem::path& target, std::optional<std::uint64_t> room)
        : m_path(extendedLength(std::filesystem::path(target).replace_filename(
              ".orvane-" + std::to_string(std::random_device{}()) + ".tmp"))),
          m_file(openFile(m_path, Use::create)),
          m_room(room) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        m_file.reset();
        removeFile(m_path);
    }

    void write(std::span<const std::uint8_t> bytes) {
        const std::size_t part = static_cast<std::size_t>(
            std::min<std::uint64_t>(bytes.size(), m_room.value_or(bytes.size())));
        if (m_room) *m_room -= part;
        if (std::fwrite(bytes.data(), 1, part, m_file.get()) != bytes.size())
            throw Error("The file cannot be written.");
    }
    // In one step. The system replaces no file that somebody, we included, has open.
    void replace(const std::filesystem::path& target) {
        if (std::fclose(m_file.release()) != 0) throw Error("The file cannot be written.");
        std::filesystem::rename(m_path, extendedLength(target));
    }

private:
    std::filesystem::path m_path;
    File m_file;
    std::optional<std::uint64_t> m_room;  // bytes until the simulated disk is full
};

}  // namespace

std::optional<Header> readHeader(const std::filesystem::path& path, std::string& error) {
    return explained(error, [&] {
        const File file = openFile(path, Use::read);
        Bytes bytes(headerSize(file.get()));
        sizeFrom(file.get(), 0);
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
        return Header::parse(bytes, error);
    });
}

bool replaceHeader(const std::filesystem::path& path, const Header& header, std::string& error,
                   std::optional<std::uint64_t> diskFullAfter) {
    return explained(error, [&] {
        File old = openFile(path, Use::replace);
        std::int64_t left = sizeFrom(old.get(), static_cast<std::int64_t>(headerSize(old.get())));
        if (left < 0) throw Error("The file cannot be read.");
        const auto newHeader = header.serialise(static_cast<std::uint64_t>(left), error);
        if (!newHeader) return false;
        TemporaryFile temporary(path, diskFullAfter);
        temporary.write(*newHeader);
        for (Bytes chunk(256U << 10U); left > 0; left -= static_cast<std::int64_t>(chunk.size())) {
            if (left < static_cast<std::int64_t>(chunk.size()))
                chunk.resize(static_cast<std::size_t>(left));
            if (std::fread(chunk.data(), 1, chunk.size(), old.get()) != chunk.size())
                throw Error("The file cannot be read.");
            temporary.write(chunk);
        }
        old.reset();
        temporary.replace(path);
        return true;
    });
}

}  // namespace orvane::asf
