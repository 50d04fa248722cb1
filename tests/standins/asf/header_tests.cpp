#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <numeric>
#include <random>

#include "standins/asf/picture.h"
#include "tests/standins/asf/asf_test_files.h"

namespace orvane::asf::test {
namespace {

// A header with everything that we understand, each in an unusual place, and much that we do not.
Bytes richHeader() {
    Bytes content;
    for (const std::uint64_t length : {8, 0, 0, 6, 0}) putNumber(content, length, 2);
    putBytes(content, textBytes(u"One"));
    putBytes(content, textBytes(u"Hi"));
    putBytes(content, Bytes{1, 2, 3});  // what a later version of the format might add

    Bytes extended;
    putNumber(extended, 6, 2);
    putExtended(extended, u"WM/TrackNumber", AttributeType::dword, Bytes{7, 0, 0, 0});
    putExtended(extended, u"WM/Genre", AttributeType::unicode, textBytes(u"Folk"));
    putExtended(extended, u"WM/Genre", AttributeType::unicode, textBytes(u"Rock"));
    putExtended(extended, u"IsVBR", AttributeType::boolean, Bytes{1, 0, 0, 0});
    putExtended(extended, u"Big", AttributeType::qword, Bytes{0, 0, 0, 0, 0, 0, 0, 0x80});
    putExtended(extended, u"Future", static_cast<AttributeType>(99), Bytes{5});

    Bytes metadata;
    putNumber(metadata, 1, 2);
    putMetadata(metadata, 0, 1, u"IsVBR", AttributeType::boolean, Bytes{1, 0});

    Bytes library;
    putNumber(library, 1, 2);
    putMetadata(library, 2, 0, u"WM/Genre", AttributeType::unicode, textBytes(u"Fölk"));

    return headerOf({strangeObject(1, 24), object(kExtendedContentDescriptionGuid, extended),
                     strangeObject(2, 57),
                     extension({strangeObject(3, 40), object(kMetadataLibraryGuid, library),
                                strangeObject(4, 24), object(kMetadataGuid, metadata)}),
                     fileProperties(), object(kContentDescriptionGuid, content),
                     strangeObject(5, 25), strangeObject(6, 24)});
}

TEST(AsfHeader, UnchangedIsWrittenByteForByte) {
    ASSERT_EQ(samples().size(), 6U);
    for (const auto& path : samples()) {
        const Bytes file = readAll(path);
        const Header header = parsed(file);
        EXPECT_EQ(header.durationHns(), 1'280'000U) << path;
        EXPECT_EQ(header.bitrate(), 24'000U) << path;
        EXPECT_EQ(serialised(header, file.size() - headerSizeOf(file)),
                  Bytes(file.begin(), file.begin() + std::ssize(file) - std::ssize(audioOf(file))));
    }
    // Only the size of the file, 0 in what we made, is put right.
    Bytes expected = richHeader();
    const std::size_t properties = 30 + 24 + numberAt(expected, 30 + 24 + 16, 8) + 57;
    const std::size_t fileSizeAt = properties + numberAt(expected, properties + 16, 8) + 40;
    overwriteNumber(expected, fileSizeAt, expected.size() + 1000, 8);
    EXPECT_EQ(serialised(parsed(richHeader()), 1000), expected);
}

TEST(AsfHeader, NewTextIsTheOnlyValueOfItsName) {
    Header header = parsed(richHeader());
    EXPECT_EQ(textOf(header, u"IsVBR"), u"true");
    EXPECT_EQ(textOf(header, u"Big"), u"9223372036854775808");
    const struct {
        std::u16string_view name, text, read;
    } changes[] = {{u"WM/Genre", u"日本 🎵", u"日本 🎵"},
                   {u"WM/TrackNumber", u"12", u"12"},
                   {u"Big", u"99999999999999999999", u"99999999999999999999"},  // beyond 64 bits
                   {u"Title", u"Two", u"Two"},
                   {u"Author", u"Somebody", u"Somebody"},
                   {u"Description", u"", u"(none)"},
                   {u"WM/AlbumArtist", u"Everybody", u"Everybody"},
                   {u"NotThere", u"", u"(none)"}};
    for (const auto& change : changes) header.setText(change.name, change.text);
    const Header again = parsed(serialised(header));
    for (const auto& change : changes) EXPECT_EQ(textOf(again, change.name), change.read);
    EXPECT_EQ(again.find(u"WM/TrackNumber")->type, AttributeType::dword);
    // One of the two genres went, the one in another language stays.
    EXPECT_EQ(again.attributes().size(), parsed(richHeader()).attributes().size() - 1 - 1 + 2);

    // ffmpeg repeats the title as "title"; readers that prefer that one must not show the old one.
    Header twice = parsed(sample());
    twice.setText(u"Title", u"Sakura");
    const Header renamed = parsed(serialised(twice));
    for (const Attribute& a : renamed.attributes())
        EXPECT_NE(a.text(), u"さくら 🌸") << "an old title is left";
}

TEST(AsfHeader, WhatDoesNotFitGoesToTheMetadataLibraryInItsOrder) {
    Header header = parsed(headerOf({fileProperties(), strangeObject(7, 30)}));
    header.setText(u"Title", u"T");
    header.setText(u"Small", u"s");
    header.setText(u"Author", std::u16string(40'000, u'a'));
    header.attributes().push_back(bytesAttribute(u"Fits", Bytes(65'535, 1)));
    header.attributes().push_back(bytesAttribute(u"Large", Bytes(65'536, 2)));
    header.attributes().push_back(Attribute::fromText(u"Small", u"twin"));
    header.attributes().push_back(Attribute::fromText(u"Streamed", u"x"));
    header.attributes().back().stream = 3;
    const Bytes bytes = serialised(header);
    const Header again = parsed(bytes);
    ASSERT_EQ(again.attributes().size(), header.attributes().size());
    EXPECT_EQ(again.find(u"Title")->place, Place::contentDescription);
    EXPECT_EQ(again.find(u"Small")->place, Place::extendedContentDescription);
    EXPECT_EQ(again.find(u"Author")->place, Place::metadataLibrary);
    EXPECT_EQ(again.find(u"Fits")->place, Place::extendedContentDescription);
    EXPECT_EQ(again.find(u"Large")->place, Place::metadataLibrary);
    EXPECT_EQ(textOf(again, u"Author").size(), 40'000U);
    EXPECT_EQ(textOf(again, u"Small"), u"s");
    EXPECT_EQ(serialised(again), bytes);

    // Pictures, one by one, as programs add them, each time through a file.
#ifdef _WIN32
    constexpr std::size_t largest = 20'000'000;
#else
    constexpr std::size_t largest = 2'000'000;  // the sanitizers take their time
#endif
    for (const auto& sizes : {std::vector<std::size_t>{10, largest, 0}, {70'000, 10, 20}}) {
        Header pictures = parsed(sample());
        Bytes data(largest);
        std::iota(data.begin(), data.end(), std::uint8_t{0});
        for (const std::size_t size : sizes) {
            const Picture picture{3, u"image/jpeg", u"Front é", std::span(data).first(size)};
            pictures.attributes().push_back(bytesAttribute(kPictureName, picture.serialise()));
            pictures = parsed(serialised(pictures));
        }
        std::vector<std::size_t> found;
        for (const Attribute& a : pictures.attributes()) {
            if (a.name != kPictureName) continue;
            const auto read = Picture::parse(a.value);
            ASSERT_TRUE(read);
            EXPECT_EQ(read->description, u"Front é");
            EXPECT_TRUE(std::ranges::equal(read->data, std::span(data).first(read->data.size())));
            found.push_back(read->data.size());
        }
        EXPECT_EQ(found, sizes);
    }
}

TEST(AsfHeader, TheFormatsLimitsAreErrorsNotLosses) {
    std::string error;
    Header longName = parsed(headerOf({fileProperties()}));
    longName.setText(std::u16string(32'767, u'n'), u"x");
    EXPECT_FALSE(longName.serialise(0, error));
    EXPECT_NE(error, "");

    Header crowded = parsed(headerOf({fileProperties()}));
    for (int i = 0; i < 65'536; ++i) crowded.attributes().push_back(bytesAttribute(u"n", {}));
    EXPECT_EQ(parsed(serialised(crowded)).attributes().size(), 65'536U);
    crowded.attributes().push_back(bytesAttribute(u"n", {}));
    EXPECT_FALSE(crowded.serialise(0, error));
}

// Whatever comes in: an answer without a crash; a sentence with a refusal; what was accepted can
// be written and read again.
bool isSane(std::span<const std::uint8_t> bytes) {
    std::string error;
    const auto header = Header::parse(bytes, error);
    if (!header) return !error.empty();
    for (const Attribute& a : header->attributes()) {
        (void)a.text();
        (void)Picture::parse(a.value);
    }
    const auto written = header->serialise(0, error);
    const auto again = written ? Header::parse(*written, error) : std::nullopt;
    return again && again->attributes().size() == header->attributes().size() &&
           again->serialise(0, error) == written;
}

TEST(AsfHeader, CutShortAnywhereIsRefused) {
    const Bytes whole = richHeader();
    for (std::size_t cut = 0; cut < whole.size(); ++cut) {
        std::string error;
        EXPECT_FALSE(Header::parse(std::span(whole).first(cut), error)) << cut;
        EXPECT_NE(error, "") << cut;
        // The same with a header that says it ends there.
        if (cut < 24) continue;
        Bytes agreed(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
        overwriteNumber(agreed, 16, cut, 8);
        EXPECT_FALSE(Header::parse(agreed, error)) << cut;
    }
    const Bytes picture = Picture{0, u"image/png", u"", std::span(whole).first(5)}.serialise();
    for (std::size_t cut = 0; cut < picture.size(); ++cut)
        EXPECT_FALSE(Picture::parse(std::span(picture).first(cut))) << cut;
}

TEST(AsfHeader, DamageIsSurvived) {
    const Bytes rich = richHeader();
    for (std::size_t at = 0; at + 8 <= rich.size(); ++at)
        for (const auto& [lie, width] :
             {std::pair{std::uint64_t{0}, 8U}, {25, 2}, {UINT64_MAX, 2}, {UINT64_MAX, 8}}) {
            Bytes lying = rich;
            overwriteNumber(lying, at, lie, width);
            EXPECT_TRUE(isSane(lying)) << at << " " << lie << " " << width;
        }
    // Any change of how many objects there are, or how long one is, is noticed.
    for (const std::size_t at : {16U, 24U, 46U})
        for (const int by : {-1, 1}) {
            Bytes lying = rich;
            lying.push_back(0);
            lying[at] = static_cast<std::uint8_t>(lying[at] + by);
            std::string error;
            EXPECT_FALSE(Header::parse(lying, error)) << at;
        }
    std::minstd_rand random(20'040);
    Bytes real = sample();
    real.resize(headerSizeOf(real));
    for (int round = 0; round < 2'000; ++round) {
        Bytes damaged = round % 2 == 0 ? rich : real;
        for (unsigned changes = 1 + random() % 6; changes > 0; --changes)
            damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
        EXPECT_TRUE(isSane(damaged)) << "round " << round;
    }
}

TEST(AsfHeader, WorkGrowsWithTheSizeOnly) {
    const auto secondsOf = [](const std::function<void()>& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    // 20,000 objects of the smallest size in each of the two lists of objects.
    Bytes many;
    for (int i = 0; i < 20'000; ++i) putBytes(many, strangeObject(9, 24));
    Bytes content;
    putNumber(content, 20'002, 4);
    putNumber(content, 0x0201, 2);
    putBytes(content, fileProperties());
    putBytes(content, many);
    putBytes(content, extension({many}));
    const Bytes crowded = object(kHeaderGuid, content);
    EXPECT_LT(secondsOf([&] { EXPECT_TRUE(isSane(crowded)); }), 2.0);

    // Many attributes, all of one name, in two lists.
    Header header = parsed(headerOf({fileProperties()}));
    for (int i = 0; i < 10'000; ++i) {
        header.attributes().push_back(Attribute::fromText(u"n", u"v"));
        header.attributes().back().place = Place::extendedContentDescription;
        header.attributes().push_back(Attribute::fromText(u"n", u"v"));
    }
    EXPECT_LT(secondsOf([&] { EXPECT_TRUE(isSane(serialised(header))); }), 2.0);
    EXPECT_LT(secondsOf([&] { header.setText(u"n", u"one"); }), 1.0);
    EXPECT_EQ(header.attributes().size(), 1U);
}

}  // namespace
}  // namespace orvane::asf::test
