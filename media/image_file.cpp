#include "media/image_file.h"

#include <io.h>

#include <cstdio>
#include <new>

#include "media/file_name.h"
#include "media/file_replacement.h"
#include "media/step_log.h"
#include "platform/handles.h"
#include "util/log/log.h"

namespace orvane {
namespace {

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

// `name` is what is opened for the file that `steps` is about.
Stream open(const StepLog& steps, const std::wstring& name, const wchar_t* mode,
            const char* errorFormat) {
    std::FILE* stream = nullptr;
    if (_wfopen_s(&stream, name.c_str(), mode) != 0) {
        syslog(LOG_ERR, errorFormat, steps.operation(), steps.path().toRawUTF8());
        return nullptr;
    }
    if (!stream)
        syslog(LOG_ERR, "%s: got a NULL FILE for %s.", steps.operation(), steps.path().toRawUTF8());
    return Stream(stream);
}

HANDLE handleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

HRESULT diskFileOnly(HANDLE file) {
    return GetFileType(file) == FILE_TYPE_DISK ? S_OK : HRESULT_FROM_WIN32(ERROR_BAD_FILE_TYPE);
}

constexpr const char* kCannotWrite = "%s: error opening %s for writing.";

// What is there already must be an ordinary file that may be written: nobody is to find a picture
// in the place of a device, a folder or what is write-protected or in use.
bool mayBeReplaced(const StepLog& steps) {
    const UniqueFile there(CreateFileW(fileNameOf(steps.path()).c_str(), GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (there) return steps.ok("GetFileType", diskFileOnly(there.get()));
    if (GetLastError() == ERROR_FILE_NOT_FOUND) return true;
    syslog(LOG_ERR, kCannotWrite, steps.operation(), steps.path().toRawUTF8());
    return false;
}

}  // namespace

std::optional<ImageData> readImageFile(const char* caller, const juce::String& path) {
    const StepLog steps(caller, path);
    const Stream stream = open(steps, fileNameOf(path), L"rb", "%s: error opening %s for reading.");
    if (!stream || !steps.ok("GetFileType", diskFileOnly(handleOf(stream.get()))))
        return std::nullopt;
    const bool atEnd = _fseeki64(stream.get(), 0, SEEK_END) == 0;
    const std::int64_t size = atEnd ? _ftelli64(stream.get()) : -1;
    if (!steps.ok("_ftelli64", size < 0 ? lastResult() : S_OK) ||
        !steps.ok("size limit", size > kMaxImageBytes ? E_OUTOFMEMORY : S_OK))
        return std::nullopt;

    ImageData image;
    image.size = static_cast<std::size_t>(size);
    image.bytes.reset(new (std::nothrow) BYTE[image.size]);
    std::rewind(stream.get());
    if (!steps.ok("new", image.bytes ? S_OK : E_OUTOFMEMORY)) return std::nullopt;
    const bool whole = std::fread(image.bytes.get(), 1, image.size, stream.get()) == image.size;
    if (!steps.ok("fread", whole ? S_OK : lastResult())) return std::nullopt;
    return image;
}

bool writeWhole(std::FILE* stream, std::span<const BYTE> image) {
    // What is still buffered goes out in a step of its own: not every runtime's fclose reports that
    // it failed.
    const bool written = std::fwrite(image.data(), 1, image.size(), stream) == image.size() &&
                         std::fflush(stream) == 0;
    return std::fclose(stream) == 0 && written;
}

bool writeImageFile(const char* caller, const juce::String& path, std::span<const BYTE> image) {
    const StepLog steps(caller, path);
    if (!mayBeReplaced(steps)) return false;
    FileReplacement replacement(path);
    Stream stream = open(steps, replacement.name(), L"wb", kCannotWrite);
    if (!stream) return false;
    const bool whole = writeWhole(stream.release(), image);
    return steps.ok("fwrite", whole ? S_OK : lastResult()) &&
           steps.ok("MoveFileExW", replacement.commit());
}

bool copyImageFile(const char* caller, const juce::String& from, const juce::String& to) {
    const StepLog steps(caller, to);
    if (!mayBeReplaced(steps)) return false;
    FileReplacement replacement(to);
    const std::wstring& copy = replacement.name();
    const bool copied = CopyFileW(fileNameOf(from).c_str(), copy.c_str(), FALSE) != 0;
    if (!steps.ok("CopyFileW", copied ? S_OK : lastResult())) return false;
    // The player hides the pictures that it keeps. A copy hidden or write-protected as well could
    // not be replaced by the next track's.
    SetFileAttributesW(copy.c_str(), FILE_ATTRIBUTE_NORMAL);
    return steps.ok("MoveFileExW", replacement.commit());
}

}  // namespace orvane
