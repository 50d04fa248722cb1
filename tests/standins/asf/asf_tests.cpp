// Headers and whole files written anew; what a player and a runtime do with them is seen by their
// users' tests.

#include <gtest/gtest.h>

#include <algorithm>
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

Bytes object(const Guid& guid, std::span<const std::uint8_t> content) {
    Bytes out;
    putBytes(out, guid);
    putNumber(out, content.size() + 24, 8);
    putBytes(out, content);
    return out;
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) putBytes(all, part);
    return all;
}

// An object of a kind that nobody knows, of `size` bytes in all.
Bytes strange(std::uint8_t kind, std::size_t size) {
    Guid guid{};
    guid.fill(kind);
    return object(guid, Bytes(size - 24, kind));
}

Bytes headerOf(std::uint32_t count, std::initializer_list<Bytes> objects) {
    Bytes content;
    putNumber(content, count, 4);
    putNumber(content, 0x0201, 2);
    putBytes(content, joined(objects));
    return object(kHeaderGuid, content);
}

void putText(Bytes& out, std::u16string_view text, AttributeType type, unsigned width,
             std::u16string_view name) {
    Bytes value;
    putTerminatedText(value, text);
    const auto nameSize = (name.size() + 1) * 2;
    putNumber(out, nameSize, 2);
    if (width == 2) putTerminatedText(out, name);
    putNumber(out, static_cast<std::uint16_t>(type), 2);
    putNumber(out, value.size(), width);
    if (width == 4) putTerminatedText(out, name);
    putBytes(out, value);
}

// Each object that we understand, in an unusual place, and much that we do not.
Bytes richHeader() {
    Bytes fields;
    for (const std::uint64_t length : {8, 0, 0, 6, 0}) putNumber(fields, length, 2);
    putTerminatedText(fields, u"One");
    putTerminatedText(fields, u"Hi");
    putBytes(fields, Bytes{1, 2, 3});  // what a later version of the format might add
    Bytes extended{3, 0};
    putText(extended, u"Folk", AttributeType::unicode, 2, u"WM/Genre");
    putText(extended, u"Rock", AttributeType::unicode, 2, u"WM/Genre");
    putText(extended, u"\u0007", AttributeType::dword, 2, u"WM/TrackNumber");  // 4 bytes
    Bytes library{1, 0, 2, 0, 0, 0};                                           // language 2
    putText(library, u"Fölk", AttributeType::unicode, 4, u"WM/Genre");
    Bytes metadata{1, 0, 0, 0, 1, 0};  // stream 1
    putText(metadata, u"odd", static_cast<AttributeType>(99), 4, u"Future");
    const Bytes inside = joined({strange(3, 40), object(kMetadataLibraryGuid, library),
                                 strange(4, 24), object(kMetadataGuid, metadata)});
    Bytes extension(kHeaderExtensionReservedGuid.begin(), kHeaderExtensionReservedGuid.end());
    putNumber(extension, 6, 2);
    putNumber(extension, inside.size(), 4);
    putBytes(extension, inside);
    return headerOf(
        7, {strange(1, 24), object(kExtendedContentDescriptionGuid, extended), strange(2, 57),
            object(kHeaderExtensionGuid, extension), object(kFilePropertiesGuid, Bytes(80)),
            object(kContentDescriptionGuid, fields), strange(5, 25)});
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

std::u16string textOf(const Header& header, std::u16string_view name) {
    const Attribute* const found = header.find(name);
    return found ? found->text() : u"(none)";
}

TEST(Asf, UnchangedIsWrittenByteForByte) {
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
    // Only the size of the file, 0 in what we made, is put right.
    Bytes expected = richHeader();
    const auto properties = std::search(expected.begin(), expected.end(),
                                        kFilePropertiesGuid.begin(), kFilePropertiesGuid.end());
    overwriteNumber(expected, static_cast<std::size_t>(properties - expected.begin()) + 40,
                    expected.size() + 1000, 8);
    EXPECT_EQ(serialised(parsed(richHeader()), 1000), expected);
}

TEST(Asf, NewTextIsTheOnlyValueOfItsName) {
    Header header = parsed(richHeader());
    const struct {
        std::u16string_view name, text, read;
    } changes[] = {{u"WM/Genre", u"日本 🎵", u"日本 🎵"}, {u"WM/TrackNumber", u"12", u"12"},
                   {u"Title", u"Two", u"Two"},          {u"Author", u"Somebody", u"Somebody"},
                   {u"Description", u"", u"(none)"},    {u"WM/AlbumArtist", u"All", u"All"}};
    for (const auto& change : changes) header.setText(change.name, change.text);
    const Header again = parsed(serialised(header));
    for (const auto& change : changes) EXPECT_EQ(textOf(again, change.name), change.read);
    EXPECT_EQ(again.find(u"WM/TrackNumber")->type, AttributeType::dword);
    // One of the two genres and the description went, the genre in another language stays.
    EXPECT_EQ(again.attributes().size(), parsed(richHeader()).attributes().size() - 2 + 2);
}

TEST(Asf, WhatDoesNotFitGoesToTheMetadataLibraryInItsOrder) {
    Header header = parsed(headerOf(1, {object(kFilePropertiesGuid, Bytes(80))}));
    const auto add = [&](std::u16string_view name, std::size_t units) {
        header.attributes().push_back(Attribute::fromText(name, std::u16string(units, u'x')));
    };
    add(u"Title", 1);
    add(u"Author", 40'000);
    add(u"Fits", 32'766);
    add(u"Large", 32'767);
    add(u"Fits", 5);  // a second value is read after the first
    const Bytes bytes = serialised(header);
    const Header again = parsed(bytes);
    std::vector<Place> places;
    for (const Attribute& a : again.attributes()) places.push_back(a.place);
    using enum Place;
    EXPECT_EQ(places, (std::vector{contentDescription, extendedContentDescription, metadataLibrary,
                                   metadataLibrary, metadataLibrary}));
    EXPECT_EQ(textOf(again, u"Author").size(), 40'000U);
    EXPECT_EQ(textOf(again, u"Fits").size(), 32'766U);
    EXPECT_EQ(serialised(again), bytes);
    header.setText(std::u16string(32'767, u'n'), u"x");
    std::string error;
    EXPECT_FALSE(header.serialise(0, error));
    EXPECT_NE(error, "");
}

TEST(Asf, FailureHalfWayLeavesTheOldFileAlone) {
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
