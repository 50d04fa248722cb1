#pragma once

// What the tests of ASF files share: samples, a folder that goes away, headers made by hand.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "standins/asf/asf_file.h"
#include "standins/asf/bytes.h"
#include "standins/asf/file_io.h"

namespace orvane::asf::test {

// A folder of this test's own, removed with all that is in it.
class TempFolder {
public:
    TempFolder() {
        static std::atomic<unsigned> counter{0};
        m_path = std::filesystem::temp_directory_path() /
                 ("orvane-asf-" + std::to_string(processId()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(m_path);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] std::size_t files() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(m_path), {}));
    }

private:
    std::filesystem::path m_path;
};

inline Bytes readAll(const std::filesystem::path& path) {
    std::string error;
    auto file = File::openForReading(path, error);
    if (!file) {
        ADD_FAILURE() << path << ": " << error;
        return {};
    }
    Bytes bytes(static_cast<std::size_t>(file->size(error).value_or(0)));
    bytes.resize(file->read(bytes, error).value_or(0));
    return bytes;
}

inline void writeAll(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    std::string error;
    bool exists = false;
    removeFile(path);
    auto file = File::createNew(path, exists, error);
    ASSERT_TRUE(file && file->write(bytes, error)) << path << ": " << error;
}

inline std::filesystem::path dataFolder() { return ORVANE_TEST_DATA; }

inline std::vector<std::filesystem::path> samples() {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(dataFolder()))
        if (entry.path().extension() == ".wma") found.push_back(entry.path());
    return found;
}

inline Bytes sample(const char* name = "sakura.wma") { return readAll(dataFolder() / name); }

inline std::uint64_t numberAt(std::span<const std::uint8_t> bytes, std::size_t at,
                              std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value |= std::uint64_t{bytes[at + i]} << (8 * i);
    return value;
}

inline std::size_t headerSizeOf(std::span<const std::uint8_t> file) {
    return static_cast<std::size_t>(numberAt(file, 16, 8));
}

inline Bytes audioOf(const Bytes& file) {
    return {file.begin() + static_cast<std::ptrdiff_t>(headerSizeOf(file)), file.end()};
}

inline Bytes object(const Guid& guid, std::span<const std::uint8_t> content) {
    Bytes out;
    putBytes(out, guid);
    putNumber(out, content.size() + 24, 8);
    putBytes(out, content);
    return out;
}

inline Bytes headerOf(const std::vector<Bytes>& objects) {
    Bytes content;
    putNumber(content, objects.size(), 4);
    putNumber(content, 1, 1);
    putNumber(content, 2, 1);
    for (const Bytes& one : objects) putBytes(content, one);
    return object(kHeaderGuid, content);
}

// One second, 64 kbit/s, three seconds of preroll. The size of the file is left 0.
inline Bytes fileProperties() {
    Bytes content(80);
    overwriteNumber(content, 40, 40'000'000, 8);
    overwriteNumber(content, 56, 3000, 8);
    overwriteNumber(content, 76, 64'000, 4);
    return object(kFilePropertiesGuid, content);
}

inline Bytes extension(const std::vector<Bytes>& objects) {
    Bytes content;
    putBytes(content, kHeaderExtensionReservedGuid);
    putNumber(content, 6, 2);
    Bytes nested;
    for (const Bytes& one : objects) putBytes(nested, one);
    putNumber(content, nested.size(), 4);
    putBytes(content, nested);
    return object(kHeaderExtensionGuid, content);
}

// An object of a kind that nobody knows, of `size` bytes in all.
inline Bytes strangeObject(std::uint8_t kind, std::size_t size) {
    Guid guid{};
    guid.fill(kind);
    return object(guid, Bytes(size - 24, kind));
}

inline void putExtended(Bytes& out, std::u16string_view name, AttributeType type,
                        std::span<const std::uint8_t> value) {
    putNumber(out, (name.size() + 1) * 2, 2);
    putTerminatedText(out, name);
    putNumber(out, static_cast<std::uint16_t>(type), 2);
    putNumber(out, value.size(), 2);
    putBytes(out, value);
}

inline void putMetadata(Bytes& out, std::uint16_t language, std::uint16_t stream,
                        std::u16string_view name, AttributeType type,
                        std::span<const std::uint8_t> value) {
    putNumber(out, language, 2);
    putNumber(out, stream, 2);
    putNumber(out, (name.size() + 1) * 2, 2);
    putNumber(out, static_cast<std::uint16_t>(type), 2);
    putNumber(out, value.size(), 4);
    putTerminatedText(out, name);
    putBytes(out, value);
}

inline Bytes textBytes(std::u16string_view text) {
    Bytes out;
    putTerminatedText(out, text);
    return out;
}

inline Attribute bytesAttribute(std::u16string_view name, Bytes value) {
    Attribute attribute;
    attribute.name = name;
    attribute.type = AttributeType::bytes;
    attribute.value = std::move(value);
    return attribute;
}

inline std::u16string textOf(const Header& header, std::u16string_view name) {
    const Attribute* const found = header.find(name);
    return found ? found->text() : u"(none)";
}

inline Header parsed(std::span<const std::uint8_t> bytes) {
    std::string error;
    auto header = Header::parse(bytes, error);
    EXPECT_TRUE(header) << error;
    return header.value_or(Header());
}

inline Bytes serialised(const Header& header, std::uint64_t rest = 0) {
    std::string error;
    auto bytes = header.serialise(rest, error);
    EXPECT_TRUE(bytes) << error;
    return bytes.value_or(Bytes());
}

}  // namespace orvane::asf::test
