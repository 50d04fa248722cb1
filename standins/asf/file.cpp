#include "standins/asf/file.h"

#ifdef _WIN32
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#else
#include <cerrno>
#endif

#include "standins/asf/error.h"

namespace orvane::asf {

namespace {

Error cannotOpen(unsigned long number) {
    return Error("The file cannot be opened (error " + std::to_string(number) + ").");
}

}  // namespace

std::int64_t sizeFrom(std::FILE* file, std::int64_t position) {
    if (fseeko64(file, 0, SEEK_END) != 0) return -1;
    const std::int64_t end = ftello64(file);
    return fseeko64(file, position, SEEK_SET) == 0 ? end - position : -1;
}

#ifdef _WIN32

File openFile(const std::filesystem::path& path, Use use) {
    // Replacing a file needs the right to delete it: fail before anything is written.
    DWORD access = GENERIC_READ | GENERIC_WRITE | DELETE;
    DWORD share = FILE_SHARE_READ;
    if (use == Use::read) {
        access = GENERIC_READ;
        share |= FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    }
    const HANDLE handle = CreateFileW(extendedLength(path).c_str(), access, share, nullptr,
                                      use == Use::create ? CREATE_ALWAYS : OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE || (use == Use::replace && isReadOnly(path))) {
        const DWORD number = GetLastError();
        if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
        throw cannotOpen(number);
    }
    // From here on the descriptor owns the handle, then the stream the descriptor.
    const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), _O_BINARY);
    if (descriptor < 0) CloseHandle(handle);
    File file(descriptor < 0 ? nullptr : _fdopen(descriptor, use == Use::read ? "rb" : "r+b"));
    if (!file && descriptor >= 0) _close(descriptor);
    if (!file) throw Error("There are too many open files.");
    return file;
}

void removeFile(const std::filesystem::path& path) noexcept { DeleteFileW(path.c_str()); }

// The extended form allows no relative path, no "/" and no "..": the system resolves these first.
std::wstring extendedLength(const std::filesystem::path& path) {
    const std::wstring& given = path.native();
    if (given.starts_with(LR"(\\?\)")) return given;
    std::wstring full(32768, L'\0');
    full.resize(
        GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    if (full.empty() || full.starts_with(LR"(\\.\)")) return given;
    return full.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + full.substr(2) : LR"(\\?\)" + full;
}

bool isReadOnly(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(extendedLength(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0)
        return false;
    SetLastError(ERROR_ACCESS_DENIED);
    return true;
}

#else

File openFile(const std::filesystem::path& path, Use use) {
    const char* const modes[] = {"rb", "r+b", "wb"};
    File file(std::fopen(path.c_str(), modes[static_cast<int>(use)]));
    if (!file) throw cannotOpen(static_cast<unsigned long>(errno));
    return file;
}

void removeFile(const std::filesystem::path& path) noexcept { std::remove(path.c_str()); }

#endif

}  // namespace orvane::asf
