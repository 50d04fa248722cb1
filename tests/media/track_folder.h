#pragma once

// A folder of the test's own with copies of sample tracks in it, and what to look at in them.

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

#include "harness/files.h"
#include "standins/asf/asf_file.h"
#include "standins/asf/picture.h"
#include "tests/support/in_tree.h"

namespace orvane::test {

inline juce::String textOf(const std::filesystem::path& path) {
    return juce::String(path.wstring().c_str());
}

// Bytes that are no two pictures' alike.
inline Bytes someImage(std::size_t size, unsigned seed = 1) {
    Bytes bytes(size);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
    return bytes;
}

inline Bytes sample(const char* name) { return contentOf(testData() / name); }

class TrackFolder : public TempFolder {
public:
    // Makes folders until a file in them has a path of more than `length` units.
    [[nodiscard]] std::filesystem::path deep(std::size_t length) const {
        std::filesystem::path folder = path();
        while (folder.native().size() <= length) folder /= std::wstring(60, L'd');
        makeFolder(folder);
        return folder;
    }
    static void copySample(const std::filesystem::path& to) {
        writeFile(to, sample("02 Greensleeves.wma"));
    }
    std::filesystem::path track(const std::wstring& name = L"track.wma") const {
        copySample(path(name));
        return path(name);
    }
    std::filesystem::path file(const std::wstring& name, const Bytes& bytes) const {
        writeFile(path(name), bytes);
        return path(name);
    }
};

inline asf::Header headerOf(const std::filesystem::path& track) {
    std::string error;
    auto header = asf::readHeader(openable(track), error);
    EXPECT_TRUE(header) << error;
    return header.value_or(asf::Header());
}

// Names and values of all but the pictures.
inline std::vector<std::pair<std::u16string, Bytes>> tagsOf(const std::filesystem::path& track) {
    std::vector<std::pair<std::u16string, Bytes>> tags;
    const asf::Header header = headerOf(track);
    for (const auto& attribute : header.attributes())
        if (attribute.name != asf::kPictureName) tags.emplace_back(attribute.name, attribute.value);
    return tags;
}

inline asf::Attribute pictureAttribute(const Bytes& image, std::uint16_t language = 0) {
    asf::Attribute attribute;
    attribute.name = asf::kPictureName;
    attribute.type = asf::AttributeType::bytes;
    attribute.language = language;
    attribute.value = asf::Picture{3, u"image/png", u"cover", image}.serialise();
    return attribute;
}

inline void addPicture(const std::filesystem::path& track, const Bytes& image) {
    auto header = headerOf(track);
    header.attributes().push_back(pictureAttribute(image));
    std::string error;
    ASSERT_TRUE(asf::replaceHeader(openable(track), header, error)) << error;
}

// Everything behind the header: the sound.
inline Bytes soundOf(const std::filesystem::path& track) {
    const Bytes all = contentOf(track);
    const std::size_t headerSize = all.at(16) | all.at(17) << 8 | all.at(18) << 16;
    EXPECT_LT(headerSize, all.size());
    return {all.begin() + static_cast<std::ptrdiff_t>(std::min(headerSize, all.size())), all.end()};
}

}  // namespace orvane::test
