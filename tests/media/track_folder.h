#pragma once

// A folder of the test's own with copies of sample tracks in it, and what to look at in them.

#include <windows.h>

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "standins/asf/asf_file.h"
#include "standins/asf/picture.h"

namespace orvane::test {

using Bytes = std::vector<std::uint8_t>;

inline juce::String textOf(const std::filesystem::path& path) {
    return juce::String(path.wstring().c_str());
}

// Past the 260 units of a plain name only the extended-length form opens.
inline std::filesystem::path openable(const std::filesystem::path& path) {
    if (path.native().size() < MAX_PATH) return path;
    std::wstring name = path.native();
    std::replace(name.begin(), name.end(), L'/', L'\\');
    return L"\\\\?\\" + name;
}

inline Bytes contentOf(const std::filesystem::path& path) {
    std::ifstream stream(openable(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream stream(openable(path), std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

// Bytes that are no two pictures' alike.
inline Bytes someImage(std::size_t size, unsigned seed = 1) {
    Bytes bytes(size);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
    return bytes;
}

class TrackFolder {
public:
    TrackFolder() {
        static int number = 0;
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        m_folder = std::filesystem::path(temporary) /
                   (L"Mus\u00e9 \u65e5\u672c " + std::to_wstring(GetCurrentProcessId()) + L"-" +
                    std::to_wstring(++number));
        std::filesystem::create_directories(m_folder);
    }
    ~TrackFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(openable(m_folder), ignored);
    }
    TrackFolder(const TrackFolder&) = delete;
    TrackFolder& operator=(const TrackFolder&) = delete;

    [[nodiscard]] std::filesystem::path path(const std::wstring& name = {}) const {
        return name.empty() ? m_folder : m_folder / name;
    }

    // Makes folders until a file in them has a path of more than `length` units.
    std::filesystem::path deep(std::size_t length) const {
        std::wstring folder = m_folder.wstring();
        while (folder.size() <= length) {
            folder += L"\\" + std::wstring(60, L'd');
            CreateDirectoryW((L"\\\\?\\" + folder).c_str(), nullptr);
        }
        return folder;
    }

    static void copySample(const std::filesystem::path& to) {
        writeFile(to, contentOf(std::filesystem::path(ORVANE_TEST_DATA) / "02 Greensleeves.wma"));
    }
    std::filesystem::path track(const std::wstring& name = L"track.wma") const {
        copySample(path(name));
        return path(name);
    }
    std::filesystem::path file(const std::wstring& name, const Bytes& bytes) const {
        writeFile(path(name), bytes);
        return path(name);
    }

private:
    std::filesystem::path m_folder;
};

inline asf::Header headerOf(const std::filesystem::path& track) {
    std::string error;
    auto header = asf::readHeader(openable(track), error);
    EXPECT_TRUE(header) << error;
    return header.value_or(asf::Header());
}

// The pictures in the file itself, in order.
inline std::vector<Bytes> picturesIn(const std::filesystem::path& track) {
    std::vector<Bytes> images;
    const asf::Header header = headerOf(track);
    for (const auto& attribute : header.attributes()) {
        if (attribute.name != asf::pictureName) continue;
        const auto picture = asf::Picture::parse(attribute.value);
        EXPECT_TRUE(picture);
        if (picture) images.emplace_back(picture->data.begin(), picture->data.end());
    }
    return images;
}

inline void addPicture(const std::filesystem::path& track, const Bytes& image) {
    auto header = headerOf(track);
    asf::Attribute attribute;
    attribute.name = asf::pictureName;
    attribute.type = asf::AttributeType::bytes;
    attribute.value = asf::Picture{3, u"image/png", u"cover", image}.serialise();
    header.attributes().push_back(attribute);
    std::string error;
    ASSERT_TRUE(asf::replaceHeader(openable(track), header, error)) << error;
}

// Everything behind the header: the sound.
inline Bytes soundOf(const std::filesystem::path& track) {
    const Bytes all = contentOf(track);
    std::uint64_t headerSize = 0;
    if (all.size() >= 24)
        for (int i = 7; i >= 0; --i)
            headerSize = headerSize << 8 | all[16 + static_cast<std::size_t>(i)];
    EXPECT_LT(headerSize, all.size());
    if (headerSize >= all.size()) return {};
    return {all.begin() + static_cast<std::ptrdiff_t>(headerSize), all.end()};
}

}  // namespace orvane::test
