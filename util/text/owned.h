#pragma once

// Owning pointers for the texts and buffers that the util libraries return. Nothing throws: without
// memory the pointer is null.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string_view>

namespace orvane {

// One UTF-16 unit, two bytes on every platform; on Windows the type that the wide calls take.
#ifdef _WIN32
using Wide = wchar_t;
#else
using Wide = char16_t;
#endif
static_assert(sizeof(Wide) == 2);

struct FreeDeleter {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

using OwnedText = std::unique_ptr<char[], FreeDeleter>;            // UTF-8, NUL-terminated
using OwnedWide = std::unique_ptr<Wide[], FreeDeleter>;            // UTF-16, NUL-terminated
using OwnedBytes = std::unique_ptr<unsigned char[], FreeDeleter>;  // data of any kind

// Zeroed memory; null when memory is short or the size in bytes overflows.
[[nodiscard]] inline OwnedText allocateText(std::size_t bytes) noexcept {
    return OwnedText(static_cast<char*>(std::calloc(bytes, 1)));
}
[[nodiscard]] inline OwnedWide allocateWide(std::size_t units) noexcept {
    return OwnedWide(static_cast<Wide*>(std::calloc(units, sizeof(Wide))));
}
[[nodiscard]] inline OwnedBytes allocateBytes(std::size_t bytes) noexcept {
    return OwnedBytes(static_cast<unsigned char*>(std::calloc(bytes, 1)));
}

// The parts concatenated into a new text, or null.
[[nodiscard]] OwnedText joinTexts(std::initializer_list<std::string_view> parts) noexcept;
[[nodiscard]] inline OwnedText duplicateText(std::string_view text) noexcept {
    return joinTexts({text});
}

}  // namespace orvane
