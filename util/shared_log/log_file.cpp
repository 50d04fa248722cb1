#include "util/shared_log/log_file.h"

#include <windows.h>

#include <shlobj.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "util/files/directories.h"
#include "util/files/file_handles.h"
#include "util/files/files.h"
#include "util/files/long_names.h"
#include "util/log/log.h"
#include "util/registry/registry.h"
#include "util/shared_log/log_diagnostics.h"
#include "util/shared_log/open_security.h"
#include "util/shared_log/shared_log.h"
#include "util/text/text.h"

namespace orvane {
namespace {

constexpr const char* kShellFolders =
    R"(Software\Microsoft\Windows\CurrentVersion\Explorer\Shell Folders)";
constexpr const char* kCommonAppData = "Common AppData";

// Where the registry does not name it, the system still knows it.
OwnedText allUsersFolder() noexcept {
    OwnedText folder = utl_reg_get_value(HKEY_LOCAL_MACHINE, kShellFolders, kCommonAppData, 0);
    if (folder) return folder;
    wchar_t path[MAX_PATH];
    const HRESULT result =
        SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path);
    return result == S_OK ? utl_wide_to_utf8_nolog(path) : nullptr;
}

}  // namespace

OwnedText get_log_file_path() noexcept {
    constexpr const char* self = "get_log_file_path";
    const OwnedText base = allUsersFolder();
    if (!base) {
        diagnose("E: %s error retrieving All Users\\Application Data folder\n", self);
        return nullptr;
    }
    OwnedText directory = joinTexts({base.get(), "\\OrVaneMedia"});
    if (!directory) diagnose("E: %s error building log path\n", self);
    return directory;
}

OwnedText get_log_file_name(const char* directory) noexcept {
    OwnedText name = joinTexts({directory, "\\OrVane.log"});
    if (!name) diagnose("error building log path + filename\n");
    return name;
}

bool create_writable_file(const char* name) noexcept {
    constexpr const char* self = "create_writable_file";
    constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE;
    OpenSecurity security(self);
    if (security.attributes() == nullptr) return false;

    UniqueFile file;
    if (const OwnedWide wideName = utl_get_unicode_filename(name, 0); wideName) {
        file.reset(CreateFileW(wideName.get(), kAccess, FILE_SHARE_READ, security.attributes(),
                               CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    } else {
        diagnose("E: create_writable_file: error building unicode version of %s\n", name);
        file.reset(CreateFileA(name, kAccess, FILE_SHARE_READ, security.attributes(), CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    if (!file) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_EXISTS) return true;
        diagnose("E: create_writable_file: failed to create log file with error %d\n",
                 static_cast<int>(error));
        return false;
    }
    if (CloseHandle(file.release()) == 0) {
        diagnose("E: create_writable_file: failed to close log file handle with error %d\n",
                 static_cast<int>(GetLastError()));
    }
    return true;
}

bool LogFile::do_openlog() noexcept {
    if (m_file) return true;
    const OwnedText directory = get_log_file_path();
    if (!directory) return false;
    const OwnedText name = get_log_file_name(directory.get());
    if (!name) return false;
    // A log that can be opened has its directory: nearly every line is spared looking at each level
    // of the path, which costs several times what writing the line does.
    if (utl_open_for_append(name.get(), m_file, 0) && m_file) return true;

    if (!utl_mkdir_multi_intl(directory.get(), 0, true, LOG_ERR)) {
        diagnose("E: do_openlog: can't create log directory %s\n", directory.get());
        return false;
    }
    bool exists = false;
    if (!utl_exists(name.get(), exists, 0, nullptr)) {
        diagnose("E: do_openlog: error determining if %s exists\n", name.get());
        exists = false;
    }
    if (!exists && !create_writable_file(name.get())) return false;
    if (!utl_open_for_append(name.get(), m_file, 0) || !m_file) {
        diagnose("E: do_openlog: can't open log file %s\n", name.get());
        return false;
    }
    return true;
}

void LogFile::do_closelog() noexcept {
    if (!m_file) return;
    if (CloseHandle(m_file.release()) == 0) {
        diagnose("E: do_closelog: failed to close log file handle with error %d\n",
                 static_cast<int>(GetLastError()));
    }
}

bool LogFile::log_msg_va(const char* front, const char* format, va_list args) noexcept {
    va_list measured;
    va_copy(measured, args);
    const int length = _vscprintf(format, measured);
    va_end(measured);
    if (length < 0) {
        diagnose("E: log_msg_va: _vscprintf returned a negative number (%d)\n", length);
        return false;
    }
    const std::size_t before = std::strlen(front);
    const std::size_t room = static_cast<std::size_t>(length) + 1;
    const OwnedText line = allocateText(before + room);
    if (!line) return false;
    std::memcpy(line.get(), front, before);
    const int result = _vsnprintf(line.get() + before, room, format, args);
    if (result < 0) {
        diagnose("E: log_msg_va: error writing buffer (%d)\n", errno);
        return false;
    }
    const DWORD size = static_cast<DWORD>(before + room);
    line.get()[size - 1] = '\n';  // in place of the terminator

    DWORD written = 0;
    if (WriteFile(m_file.get(), line.get(), size, &written, nullptr) == 0) {
        diagnose("E: log_msg_va: error %d writing buffer to file\n",
                 static_cast<int>(GetLastError()));
        return false;
    }
    if (written != size) {
        diagnose("E: log_msg_va: expected to write %d chars, but wrote %d\n",
                 static_cast<int>(size), static_cast<int>(written));
        return false;
    }
    if (logOption(LOG_PERROR)) {
        std::fwrite(line.get(), 1, size, stderr);
        std::fflush(stderr);
    }
    return true;
}

}  // namespace orvane
