// One line of the log beside the bare calls that it is made of: the lock, the folder's name out of
// the registry, open, the line's six pieces, close.

#include "util/log/log.h"

#include <windows.h>

#include <shlobj.h>

#include <string>

#include "bench/rows.h"
#include "bench/samples.h"
#include "platform/handles.h"

namespace orvane::bench {
namespace {

constexpr const char* kText = "OrvaneAppConnector::connect: m_ep->initConnection failed";

// Beside the log, so that both write to the same disk.
class BareLog {
public:
    BareLog() {
        wchar_t folder[MAX_PATH] = {};
        require(SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder)),
                "the folder of the log is not known");
        m_path = std::wstring(folder) + L"\\OrVaneMedia\\bench.log";
    }
    ~BareLog() { DeleteFileW(m_path.c_str()); }
    BareLog(const BareLog&) = delete;
    BareLog& operator=(const BareLog&) = delete;

    void write() {
        constexpr const wchar_t* kFolders =
            L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
        WaitForSingleObject(m_mutex.get(), INFINITE);
        wchar_t folder[MAX_PATH] = {};
        DWORD size = sizeof(folder);
        RegGetValueW(HKEY_LOCAL_MACHINE, kFolders, L"Common AppData", RRF_RT_REG_SZ, nullptr,
                     folder, &size);
        {
            const UniqueFile file(CreateFileW(m_path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ,
                                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                              nullptr));
            require(static_cast<bool>(file), "the file beside the log cannot be opened");
            for (const std::string& piece : m_pieces) {
                DWORD written = 0;
                WriteFile(file.get(), piece.data(), static_cast<DWORD>(piece.size()), &written,
                          nullptr);
            }
        }
        ReleaseMutex(m_mutex.get());
    }

private:
    std::wstring m_path;
    UniqueHandle m_mutex{CreateMutexW(nullptr, FALSE, L"OrvaneBenchLog")};
    const std::string m_pieces[6] = {
        "2026-01-01 00:00:00 : ", "<3> ", "orvane_bench : ", "[1234] ", kText, "\n"};
};

}  // namespace

void measureLog() {
    syslog(LOG_ERR, "%s", kText);  // the first line makes the folder
    BareLog bare;
    compare({"one log line", [] { syslog(LOG_ERR, "%s", kText); }},
            {"its calls alone", [&] { bare.write(); }}, {.blocks = 60, .samples = 10});
    measure(
        {"one log line, masked", [] { syslog(LOG_DEBUG, "COrVaneWmpPlugin: open state=%d", 3); }},
        {.blocks = 60, .repeats = 100'000});
}

}  // namespace orvane::bench
