#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <numeric>
#include <random>

#include "standins/asf/picture.h"
#include "tests/asf/asf_test_files.h"

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
    putNumber(extended, 7, 2);
    putExtended(extended, u"WM/TrackNumber", AttributeType::dword, Bytes{7, 0, 0, 0});
    putExtended(extended, u"WM/Genre", AttributeType::unicode, textBytes(u"Folk"));
    putExtended(extended, u"WM/Genre", AttributeType::unicode, textBytes(u"Rock"));
    putExtended(extended, u"IsVBR", AttributeType::boolean, Bytes{1, 0, 0, 0});
    putExtended(extended, u"Big", AttributeType::qword, Bytes{0, 0, 0, 0, 0, 0, 0, 0x80});
    putExtended(extended, u"Blob", AttributeType::bytes, Bytes{0, 0, 9});
    putExtended(extended, u"Future", static_cast<AttributeType>(99), Bytes{5});

    Bytes metadata;
    putNumber(metadata, 1, 2);
    putMetadata(metadata, 0, 1, u"IsVBR", AttributeType::boolean, Bytes{1, 0});

    Bytes library;
    putNumber(library, 2, 2);
    putMetadata(library, 2, 0, u"WM/Genre", AttributeType::unicode, textBytes(u"Fölk"));
    putMetadata(library, 0, 0, u"Id", AttributeType::guid,
                Bytes{0x30, 0x26, 0xB2, 0x75, 0x8E, 0x66, 0xCF, 0x11, 0xA6, 0xD9, 0, 0xAA, 0, 0x62,
                      0xCE, 0x6C});

    Bytes all = headerOf({strangeObject(1, 24), object(extendedContentDescriptionGuid, extended),
                          strangeObject(2, 57),
                          extension({strangeObject(3, 40), object(metadataLibraryGuid, library),
                                     strangeObject(4, 24), object(metadataGuid, metadata)}),
                          fileProperties(), object(contentDescriptionGuid, content),
                          strangeObject(5, 25), strangeObject(6, 24)});
    return all;
}

TEST(AsfHeader, UnchangedIsWrittenByteForByte) {
    ASSERT_EQ(samples().size(), 6U);
    for (const auto& path : samples()) {
        const Bytes file = readAll(path);
        const Header header = parsed(file);
        EXPECT_EQ(header.durationHns(), 1'280'000U) << path;
        EXPECT_EQ(header.bitrate(), 24'000U) << path;
        const Bytes again = serialised(header, file.size() - headerSizeOf(file));
        EXPECT_EQ(again, Bytes(file.begin(), file.begin() + std::ssize(again))) << path;
        EXPECT_EQ(again.size(), headerSizeOf(file)) << path;
    }
    // Only the size of the file, 0 in what we made, is put right.
    Bytes expected = richHeader();
    const std::size_t properties = 30 + 24 + numberAt(expected, 30 + 24 + 16, 8) + 57;
    const std::size_t fileSizeAt = properties + numberAt(expected, properties + 16, 8) + 40;
    overwriteNumber(expected, fileSizeAt, expected.size() + 1000, 8);
    EXPECT_EQ(serialised(parsed(richHeader()), 1000), expected);
}

TEST(AsfHeader, ShowsEveryTypeAsAPlayerWould) {
    const Header header = parsed(richHeader());
    EXPECT_EQ(header.durationHns(), 10'000'000U);
    EXPECT_EQ(header.bitrate(), 64'000U);
    EXPECT_EQ(textOf(header, u"Title"), u"One");
    EXPECT_EQ(textOf(header, u"Description"), u"Hi");
    EXPECT_EQ(textOf(header, u"Author"), u"(none)");
    EXPECT_EQ(textOf(header, u"WM/TrackNumber"), u"7");
    EXPECT_EQ(textOf(header, u"IsVBR"), u"true");
    EXPECT_EQ(textOf(header, u"Big"), u"9223372036854775808");
    EXPECT_EQ(textOf(header, u"Blob"), u"");
    EXPECT_EQ(textOf(header, u"Id"), u"{75B22630-668E-11CF-A6D9-00AA0062CE6C}");
    EXPECT_EQ(header.find(u"wm/genre"), nullptr);
    EXPECT_EQ(textOf(parsed(sample()), u"Title"), u"さくら 🌸");
}

TEST(AsfHeader, NewTextIsTheOnlyValueOfItsName) {
    Header header = parsed(richHeader());
    header.setText(u"WM/Genre", u"日本 🎵");
    header.setText(u"WM/TrackNumber", u"12");
    header.setText(u"Big", u"99999999999999999999");  // no longer a number of 64 bits
    header.setText(u"Title", u"Two");
    header.setText(u"Author", u"Somebody");
    header.setText(u"Description", u"");
    header.setText(u"WM/AlbumArtist", u"Everybody");
    header.setText(u"NotThere", u"");
    const Header again = parsed(serialised(header));

    EXPECT_EQ(textOf(again, u"WM/Genre"), u"日本 🎵");
    EXPECT_EQ(again.find(u"WM/TrackNumber")->type, AttributeType::dword);
    EXPECT_EQ(textOf(again, u"WM/TrackNumber"), u"12");
    EXPECT_EQ(textOf(again, u"Big"), u"99999999999999999999");
    EXPECT_EQ(textOf(again, u"Title"), u"Two");
    EXPECT_EQ(textOf(again, u"Author"), u"Somebody");
    EXPECT_EQ(again.find(u"Author")->place, Place::contentDescription);
    EXPECT_EQ(textOf(again, u"Description"), u"(none)");
    EXPECT_EQ(textOf(again, u"WM/AlbumArtist"), u"Everybody");
    EXPECT_EQ(again.find(u"NotThere"), nullptr);
    // One of the two genres went, the one in another language stays.
    EXPECT_EQ(again.attributes().size(), parsed(richHeader()).attributes().size() - 1 - 1 + 2);

    // ffmpeg repeats the title as "title"; readers that prefer that one must not show the old one.
    Header twice = parsed(sample());
    twice.setText(u"Title", u"Sakura");
    const Header renamed = parsed(serialised(twice));
    for (const Attribute& a : renamed.attributes())
        EXPECT_NE(a.text(), u"さくら 🌸") << "an old title is left";
    twice.setText(u"Title", u"");
    const Header untitled = parsed(serialised(twice));
    EXPECT_EQ(textOf(untitled, u"Title"), u"(none)");
    EXPECT_EQ(textOf(untitled, u"title"), u"(none)");
}

TEST(AsfHeader, WhatDoesNotFitGoesToTheMetadataLibrary) {
    Header header = parsed(headerOf({fileProperties(), strangeObject(7, 30)}));
    header.setText(u"Title", u"T");
    header.setText(u"Small", u"s");
    header.setText(u"Author", std::u16string(40'000, u'a'));
    header.attributes().push_back(bytesAttribute(u"Fits", Bytes(65'535, 1)));
    header.attributes().push_back(bytesAttribute(u"Large", Bytes(65'536, 2)));
    header.attributes().push_back(Attribute::fromText(u"Small", u"twin"));
    Attribute streamed = Attribute::fromText(u"Streamed", u"x");
    streamed.stream = 3;
    header.attributes().push_back(streamed);
    Attribute truth;
    truth.name = u"Truth";
    truth.type = AttributeType::boolean;
    truth.stream = 1;
    truth.value = {1, 0, 0, 0};
    header.attributes().push_back(truth);

    const Bytes bytes = serialised(header);
    const Header again = parsed(bytes);
    ASSERT_EQ(again.attributes().size(), header.attributes().size());
    const auto place = [&](std::u16string_view name) { return again.find(name)->place; };
    EXPECT_EQ(place(u"Title"), Place::contentDescription);
    EXPECT_EQ(place(u"Small"), Place::extendedContentDescription);
    EXPECT_EQ(place(u"Author"), Place::metadataLibrary);
    EXPECT_EQ(place(u"Fits"), Place::extendedContentDescription);
    EXPECT_EQ(place(u"Large"), Place::metadataLibrary);
    EXPECT_EQ(again.find(u"Large")->value, Bytes(65'536, 2));
    EXPECT_EQ(textOf(again, u"Author").size(), 40'000U);
    EXPECT_EQ(textOf(again, u"Small"), u"s");
    // Truth values take two bytes there.
    EXPECT_EQ(again.attributes().back().value, (Bytes{1, 0}));
    EXPECT_EQ(serialised(again), bytes);
    // Back to a size that fits, it may stay where it is.
    Header smaller = again;
    smaller.setText(u"Author", u"a");
    EXPECT_EQ(textOf(parsed(serialised(smaller)), u"Author"), u"a");
}

TEST(AsfHeader, AttributesOfOneNameKeepTheirOrder) {
    for (const auto& sizes : {std::vector<std::size_t>{10, 70'000, 20}, {70'000, 10, 20}}) {
        Header header = parsed(sample());
        // One by one, as programs add them, each time through a file.
        for (const std::size_t size : sizes) {
            header.attributes().push_back(bytesAttribute(pictureName, Bytes(size, 1)));
            header = parsed(serialised(header));
        }
        std::vector<std::size_t> found;
        for (const Attribute& a : header.attributes())
            if (a.name == pictureName) found.push_back(a.value.size());
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
    error.clear();
    EXPECT_FALSE(crowded.serialise(0, error));
    EXPECT_NE(error, "");
}

// Whatever comes in: an answer without a crash; a sentence with a refusal; what was accepted can
// be written and read again.
void expectSane(std::span<const std::uint8_t> bytes, const std::string& what) {
    std::string error;
    const auto header = Header::parse(bytes, error);
    EXPECT_NE(header.has_value(), !error.empty()) << what;
    if (!header) return;
    const auto written = header->serialise(0, error);
    ASSERT_TRUE(written) << what << ": " << error;
    const auto again = Header::parse(*written, error);
    ASSERT_TRUE(again) << what << ": " << error;
    EXPECT_EQ(again->attributes().size(), header->attributes().size()) << what;
    EXPECT_EQ(again->serialise(0, error), written) << what;
}

TEST(AsfHeader, CutShortAnywhereIsRefused) {
    for (const Bytes& whole : {richHeader(), sample()}) {
        const std::size_t size = headerSizeOf(whole);
        for (std::size_t cut = 0; cut < size; ++cut) {
            std::string error;
            EXPECT_FALSE(Header::parse(std::span(whole).first(cut), error)) << cut;
            EXPECT_NE(error, "") << cut;
            // The same with a header that says it ends there.
            if (cut < 24) continue;
            Bytes agreed(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
            overwriteNumber(agreed, 16, cut, 8);
            error.clear();
            EXPECT_FALSE(Header::parse(agreed, error)) << cut;
            EXPECT_NE(error, "") << cut;
        }
    }
}

TEST(AsfHeader, LyingSizesAndCountsAreSurvived) {
    const Bytes whole = richHeader();
    const std::vector<std::uint64_t> lies = {0, 1, 25, 0x7FFF, 0xFFFF, 0xFFFFFFFF, UINT64_MAX};
    for (std::size_t at = 0; at + 8 <= whole.size(); ++at)
        for (const unsigned width : {2U, 8U})
            for (const std::uint64_t lie : lies) {
                Bytes lying = whole;
                overwriteNumber(lying, at, lie, width);
                expectSane(lying, std::to_string(at) + "/" + std::to_string(width));
            }
    // Any change of how many objects there are, or how long one is, is noticed.
    std::string error;
    for (const std::size_t at : {std::size_t{16}, std::size_t{24}, std::size_t{46}}) {
        for (const int by : {-1, 1}) {
            Bytes lying = whole;
            lying.push_back(0);
            lying[at] = static_cast<std::uint8_t>(lying[at] + by);
            EXPECT_FALSE(Header::parse(lying, error)) << at;
        }
    }
}

TEST(AsfHeader, RandomDamageIsSurvived) {
    std::minstd_rand random(20'040);
    const std::vector<Bytes> seeds = {richHeader(), sample(), sample("Track 06.wma")};
    for (int round = 0; round < 10'000; ++round) {
        Bytes damaged = seeds[random() % seeds.size()];
        const unsigned changes = 1 + random() % 6;
        for (unsigned i = 0; i < changes; ++i)
            damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
        expectSane(damaged, "round " + std::to_string(round));
    }
}

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(AsfHeader, WorkGrowsWithTheSizeOnly) {
    // 100,000 objects of the smallest size in each of the two lists of objects.
    Bytes many;
    for (int i = 0; i < 100'000; ++i) putBytes(many, strangeObject(9, 24));
    Bytes content;
    putNumber(content, 100'002, 4);
    putNumber(content, 0x0201, 2);
    putBytes(content, fileProperties());
    putBytes(content, many);
    putBytes(content, extension({many}));
    const Bytes crowded = object(headerGuid, content);
    EXPECT_LT(secondsOf([&] { expectSane(crowded, "crowded"); }), 10.0);

    // Many attributes, all of one name, in two lists.
    Header header = parsed(headerOf({fileProperties()}));
    for (int i = 0; i < 30'000; ++i) {
        header.attributes().push_back(Attribute::fromText(u"n", u"v"));
        header.attributes().back().place = Place::extendedContentDescription;
        header.attributes().push_back(Attribute::fromText(u"n", u"v"));
    }
    EXPECT_LT(secondsOf([&] { expectSane(serialised(header), "attributes"); }), 10.0);
    EXPECT_LT(secondsOf([&] { header.setText(u"n", u"one"); }), 1.0);
    EXPECT_EQ(header.attributes().size(), 1U);
}

TEST(AsfHeader, PicturesOfAnySizeComeBack) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{300}, std::size_t{70'000}, std::size_t{20'000'000}}) {
        Bytes data(size);
        std::iota(data.begin(), data.end(), std::uint8_t{0});
        const Picture picture{3, u"image/jpeg", u"Front é", data};
        Header header = parsed(sample());
        header.attributes().push_back(bytesAttribute(pictureName, picture.serialise()));
        Bytes file;
        EXPECT_LT(secondsOf([&] { file = serialised(header); }), 5.0);
        Header again;
        EXPECT_LT(secondsOf([&] { again = parsed(file); }), 5.0);
        const auto read = Picture::parse(again.find(pictureName)->value);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->type, 3);
        EXPECT_EQ(read->mimeType, u"image/jpeg");
        EXPECT_EQ(read->description, u"Front é");
        EXPECT_TRUE(std::ranges::equal(read->data, data));
    }
}

TEST(AsfPicture, CutShortAnywhereIsRefused) {
    const Bytes data(5, 0xAB);
    const Bytes whole = Picture{0, u"image/png", u"", data}.serialise();
    for (std::size_t cut = 0; cut < whole.size(); ++cut)
        EXPECT_FALSE(Picture::parse(std::span(whole).first(cut))) << cut;
    Bytes lying = whole;
    overwriteNumber(lying, 1, 0xFFFFFFFF, 4);
    EXPECT_FALSE(Picture::parse(lying));
}

}  // namespace
}  // namespace orvane::asf::test
