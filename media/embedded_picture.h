#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <span>

struct IWMHeaderInfo3;

namespace orvane {

class StepLog;

// The picture in a media file's header, read and written through the Windows Media Format runtime
// ("WM/Picture", stream 0). The file is not trusted: a damaged record counts as no picture. Any
// thread, one object on one thread.
class EmbeddedPicture {
public:
    // Whether the file has a picture attribute that is not empty. Does not check its content.
    [[nodiscard]] static bool isIn(IWMHeaderInfo3* header);

    // The first picture; none when there is none, when it is damaged, or when memory is short.
    [[nodiscard]] static std::optional<EmbeddedPicture> read(IWMHeaderInfo3* header);

    // Replaces all pictures of all languages with `image` (not empty, under 4 GB), as "image/jpeg"
    // without description. Changes only the header in memory: on false the caller must not flush
    // it. Logs a failed step through `steps`.
    [[nodiscard]] static bool replace(IWMHeaderInfo3* header, std::span<const BYTE> image,
                                      const StepLog& steps);

    // The image's bytes, of any image format; valid as long as this object.
    [[nodiscard]] std::span<const BYTE> image() const { return m_image; }

private:
    EmbeddedPicture(std::unique_ptr<BYTE[]> value, std::span<const BYTE> image)
        : m_value(std::move(value)), m_image(image) {}

    std::unique_ptr<BYTE[]> m_value;
    std::span<const BYTE> m_image;
};

}  // namespace orvane
