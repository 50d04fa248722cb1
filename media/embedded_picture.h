#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <span>

struct IWMHeaderInfo3;

namespace orvane {

class StepLog;

// The picture in a media file's header, as the Format runtime shows it ("WM/Picture", stream 0).
// What is read comes out of a file that anybody may have made: a record that does not hold
// together is no picture.
class EmbeddedPicture {
public:
    // Whether the file has a picture attribute that is not empty; its content is not looked at.
    [[nodiscard]] static bool isIn(IWMHeaderInfo3* header);

    // The first picture. Nothing when there is none, it is damaged, or memory does not suffice.
    [[nodiscard]] static std::optional<EmbeddedPicture> read(IWMHeaderInfo3* header);

    // Puts `image` (not empty, under 4 GB) in the place of all pictures, whatever their language,
    // as "image/jpeg" without description. Changes only the header in memory: on false the caller
    // must not flush it. What fails is told to `steps`.
    [[nodiscard]] static bool replace(IWMHeaderInfo3* header, std::span<const BYTE> image,
                                      const StepLog& steps);

    // The image itself, in whatever format it is; valid as long as this object.
    [[nodiscard]] std::span<const BYTE> image() const { return m_image; }

private:
    EmbeddedPicture(std::unique_ptr<BYTE[]> value, std::span<const BYTE> image)
        : m_value(std::move(value)), m_image(image) {}

    std::unique_ptr<BYTE[]> m_value;
    std::span<const BYTE> m_image;
};

}  // namespace orvane
