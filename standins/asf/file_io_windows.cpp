#include "standins/asf/file_io.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace orvane::asf {

namespace {

std::string failure(const char* call) {
    const DWORD code = GetLastError();
    std::string text = std::string(call) + " failed (" + std::to_string(code) + ")";
    switch (code) {
        case ERROR_SHARING_VIOLATION:
            return text + ": another program has the file open.";
        case ERROR_ACCESS_DENIED:
            return text + ": the file may not be written, or another program has it open.";
        case ERROR_DISK_FULL:
            return text + ": the disk is full.";
        default:
            return text + ".";
    }
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE handle(std::intptr_t native) { return reinterpret_cast<HANDLE>(native); }

std::intptr_t open(const std::filesystem::path& path, DWORD access, DWORD share,
                   DWORD disposition) {
    return reinterpret_cast<std::intptr_t>(CreateFileW(extendedLength(path).c_str(), access, share,
                                                       nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                                                       nullptr));
}

}  // namespace

static_assert(sizeof(std::intptr_t) == sizeof(HANDLE));

void File::close() noexcept {
    if (m_native != none) CloseHandle(handle(std::exchange(m_native, none)));
}

std::optional<File> File::openForReading(const std::filesystem::path& path, std::string& error) {
    const Native native = open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    if (native != none) return File(native);
    error = failure("CreateFileW");
    return std::nullopt;
}

std::optional<File> File::openExclusively(const std::filesystem::path& path, std::string& error) {
    // Who may not delete the file may not replace it: better to fail before anything is written.
    const Native native =
        open(path, GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ, OPEN_EXISTING);
    if (native != none && !isReadOnly(path)) return File(native);
    error = failure("CreateFileW");
    if (native != none) CloseHandle(handle(native));
    return std::nullopt;
}

std::optional<File> File::createNew(const std::filesystem::path& path, bool& exists,
                                    std::string& error) {
    const Native native = open(path, GENERIC_WRITE, 0, CREATE_NEW);
    exists = native == none &&
             (GetLastError() == ERROR_FILE_EXISTS || GetLastError() == ERROR_ALREADY_EXISTS);
    if (native != none) return File(native);
    error = failure("CreateFileW");
    return std::nullopt;
}

std::optional<std::uint64_t> File::size(std::string& error) const {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(handle(m_native), &size)) {
        error = failure("GetFileSizeEx");
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::optional<std::size_t> File::read(std::span<std::uint8_t> buffer, std::string& error) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const DWORD wanted =
            static_cast<DWORD>(std::min<std::size_t>(buffer.size() - done, 1U << 20U));
        DWORD got = 0;
        if (!ReadFile(handle(m_native), buffer.data() + done, wanted, &got, nullptr)) {
            error = failure("ReadFile");
            return std::nullopt;
        }
        if (got == 0) break;
        done += got;
    }
    return done;
}

bool File::write(std::span<const std::uint8_t> bytes, std::string& error) {
    while (!bytes.empty()) {
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 20U));
        DWORD put = 0;
        if (!WriteFile(handle(m_native), bytes.data(), wanted, &put, nullptr) || put == 0) {
            error = failure("WriteFile");
            return false;
        }
        bytes = bytes.subspan(put);
    }
    return true;
}

bool File::seek(std::uint64_t position, std::string& error) {
    LARGE_INTEGER to{};
    to.QuadPart = static_cast<LONGLONG>(position);
    if (SetFilePointerEx(handle(m_native), to, nullptr, FILE_BEGIN)) return true;
    error = failure("SetFilePointerEx");
    return false;
}

bool File::flush(std::string& error) {
    if (FlushFileBuffers(handle(m_native))) return true;
    error = failure("FlushFileBuffers");
    return false;
}

bool replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                 std::string& error) {
    if (MoveFileExW(extendedLength(source).c_str(), extendedLength(target).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    error = failure("MoveFileExW");
    return false;
}

void removeFile(const std::filesystem::path& path) noexcept {
    try {
        DeleteFileW(extendedLength(path).c_str());
    } catch (...) {
        // Out of memory: the file stays, under a name that nothing looks for.
        return;
    }
}

// That form takes no relative paths, no "/" and no "..", so the system makes the path full first.
std::wstring extendedLength(const std::filesystem::path& path) {
    const std::wstring& given = path.native();
    if (given.starts_with(LR"(\\?\)")) return given;
    std::wstring full(given.size() + MAX_PATH, L'\0');
    DWORD length =
        GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length >= full.size()) {
        full.resize(length);
        length =
            GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    }
    if (length == 0 || length >= full.size()) return given;
    full.resize(length);
    if (full.starts_with(LR"(\\.\)")) return full;
    if (full.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + full.substr(2);
    return LR"(\\?\)" + full;
}

bool isReadOnly(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(extendedLength(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0)
        return false;
    SetLastError(ERROR_ACCESS_DENIED);
    return true;
}

std::uint32_t processId() { return GetCurrentProcessId(); }

}  // namespace orvane::asf
