// Headers and whole files written anew; what a player and a runtime do with them is seen by their
// users' tests.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "standins/asf/asf_file.h"
#include "standins/asf/bytes.h"
#include "tests/support/in_tree.h"

namespace orvane::asf {
namespace {

Bytes contentOf(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Bytes sample() { return contentOf(test::testData() / "sakura.wma"); }

std::size_t headerSizeOf(const Bytes& file) {
    ByteReader reader(file);
    reader.take(16);
    return static_cast<std::size_t>(reader.u64());
}

Header parsed(const Bytes& bytes) {
    std::string error;
    auto header = Header::parse(bytes, error);
    EXPECT_TRUE(header) << error;
    return header.value_or(Header());
}

Bytes serialised(const Header& header, std::uint64_t rest = 0) {
    std::string error;
    auto bytes = header.serialise(rest, error);
    EXPECT_TRUE(bytes) << error;
    return bytes.value_or(Bytes());
}

TEST(Asf, AnUnchangedFileIsWrittenByteForByte) {
    for (const auto& entry : std::filesystem::directory_iterator(test::testData())) {
        if (entry.path().extension() != ".wma") continue;
        Bytes file = contentOf(entry.path());
        const Header header = parsed(file);
        EXPECT_EQ(header.durationHns(), 1'280'000U) << entry;
        const std::size_t size = headerSizeOf(file);
        const Bytes written = serialised(header, file.size() - size);
        file.resize(size);
        EXPECT_EQ(written, file) << entry;
    }
}

TEST(Asf, AFailedWriteLeavesTheOldFileUnchanged) {
    const std::filesystem::path folder = std::filesystem::absolute("asf-tests é 日本");
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    const auto path = folder / "track.wma";
    const Bytes before = sample();
    std::filesystem::copy_file(test::testData() / "sakura.wma", path);
    std::string error;
    auto header = readHeader(path, error);
    ASSERT_TRUE(header) << error;
    header->setText(u"Title", u"A new title é 日本");
    Bytes after = serialised(*header, before.size() - headerSizeOf(before));
    const std::size_t newHeaderSize = after.size();
    after.insert(after.end(), before.begin() + std::ptrdiff_t(headerSizeOf(before)), before.end());
    for (const std::size_t room : {std::size_t{0}, newHeaderSize, after.size() - 1, after.size()}) {
        EXPECT_EQ(replaceHeader(path, *header, error, room), room == after.size());
        EXPECT_EQ(contentOf(path), room == after.size() ? after : before) << room;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1) << room;
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace orvane::asf
