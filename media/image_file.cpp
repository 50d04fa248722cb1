#include "media/image_file.h"

#include <io.h>

#include <cstdio>
#include <new>

#include "media/file_name.h"
#include "util/log/log.h"

namespace orvane {
namespace {

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

Stream open(const char* caller, const juce::String& path, const wchar_t* mode,
            const char* errorFormat) {
    std::FILE* stream = nullptr;
    if (_wfopen_s(&stream, fileNameOf(path).c_str(), mode) != 0) {
        syslog(LOG_ERR, errorFormat, caller, path.toRawUTF8());
        return nullptr;
    }
    if (!stream) syslog(LOG_ERR, "%s: got a NULL FILE for %s.", caller, path.toRawUTF8());
    return Stream(stream);
}

HANDLE handleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

bool isDiskFile(std::FILE* stream) { return GetFileType(handleOf(stream)) == FILE_TYPE_DISK; }

}  // namespace

std::optional<ImageData> readImageFile(const char* caller, const juce::String& path) {
    const Stream stream = open(caller, path, L"rb", "%s: error opening %s for reading.");
    if (!stream || !isDiskFile(stream.get())) return std::nullopt;
    if (_fseeki64(stream.get(), 0, SEEK_END) != 0) return std::nullopt;
    const std::int64_t size = _ftelli64(stream.get());
    if (size < 0 || size > kMaxImageBytes || _fseeki64(stream.get(), 0, SEEK_SET) != 0)
        return std::nullopt;

    ImageData image;
    image.size = static_cast<std::size_t>(size);
    image.bytes.reset(new (std::nothrow) BYTE[image.size]);
    if (!image.bytes || std::fread(image.bytes.get(), 1, image.size, stream.get()) != image.size)
        return std::nullopt;
    return image;
}

bool writeWholeOrDelete(std::FILE* stream, const juce::String& path, std::span<const BYTE> image) {
    // What is still buffered goes out in a step of its own: not every runtime's fclose reports that
    // it failed.
    const bool written = std::fwrite(image.data(), 1, image.size(), stream) == image.size() &&
                         std::fflush(stream) == 0;
    if (std::fclose(stream) == 0 && written) return true;
    DeleteFileW(fileNameOf(path).c_str());
    return false;
}

bool writeImageFile(const char* caller, const juce::String& path, std::span<const BYTE> image) {
    Stream stream = open(caller, path, L"wb", "%s: error opening %s for writing.");
    if (!stream || !isDiskFile(stream.get())) return false;
    return writeWholeOrDelete(stream.release(), path, image);
}

}  // namespace orvane
