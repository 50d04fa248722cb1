#include "standins/format/opened_file.h"

#include <string>
#include <utility>

#include "platform/wm_format.h"
#include "standins/asf/file.h"

namespace orvane::standin {

namespace {

HRESULT openFailure(DWORD error) {
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return NS_E_FILE_NOT_FOUND;
    return error == ERROR_ACCESS_DENIED ? E_ACCESSDENIED : NS_E_FILE_OPEN_FAILED;
}

// A test that has made this event holds up every call that opens or flushes a file until it signals
// it, as a file on a slow disk does.
void waitWhileHeldUp() {
    const UniqueHandle held(OpenEventW(SYNCHRONIZE, FALSE, L"OrVaneStandInFormatHold"));
    if (held) WaitForSingleObject(held.get(), INFINITE);
}

}  // namespace

HRESULT OpenedFile::open(const WCHAR* path, DWORD access, DWORD share) {
    if (!path) return E_POINTER;
    waitWhileHeldUp();
    if (isOpen()) return ASF_E_INVALIDSTATE;
    const bool writable = (access & GENERIC_WRITE) != 0;
    // Replacing the file needs the right to delete it, so a missing right is an error now and not
    // when flushing. The header is read through a second handle, so reading is always shared.
    UniqueFile lock(CreateFileW(
        asf::extendedLength(path).c_str(), GENERIC_READ | (writable ? GENERIC_WRITE | DELETE : 0),
        share | FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!lock || (writable && asf::isReadOnly(path))) return openFailure(GetLastError());
    std::string error;
    auto header = asf::readHeader(path, error);
    if (!header) return NS_E_INVALID_INPUT_FORMAT;
    m_path = path;
    m_lock = std::move(lock);
    m_header = std::move(header);
    m_writable = writable;
    m_changed = false;
    return S_OK;
}

void OpenedFile::close() noexcept {
    m_lock.reset();
    m_header.reset();
    m_writable = false;
    m_changed = false;
}

HRESULT OpenedFile::flush() {
    waitWhileHeldUp();
    if (!isOpen()) return ASF_E_INVALIDSTATE;
    const std::optional<asf::Header> header = std::exchange(m_header, std::nullopt);
    const bool changed = m_changed;
    const bool writable = m_writable;
    close();
    if (!changed) return S_OK;
    std::string error;
    return writable && asf::replaceHeader(m_path, *header, error) ? S_OK : NS_E_FILE_WRITE;
}

}  // namespace orvane::standin
