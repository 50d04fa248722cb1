#pragma once

// The file behind a reader or an editor: held open from Open to Flush, Close or release, so that
// a caller that forgets to close it locks others out, as with the real runtime.

#include <windows.h>

#include <filesystem>
#include <optional>

#include "platform/handles.h"
#include "standins/asf/asf_file.h"

namespace orvane::standin {

class OpenedFile {
public:
    // With GENERIC_WRITE in `access` the file must be one that can be written and replaced.
    HRESULT open(const WCHAR* path, DWORD access, DWORD share);
    // Forgets all changes.
    void close() noexcept;
    // Writes the changed header into the file in one step and closes the file, whether it worked
    // or not; when it did not the file is what it was.
    HRESULT flush();

    [[nodiscard]] bool isOpen() const noexcept { return m_header.has_value(); }
    [[nodiscard]] bool isWritable() const noexcept { return m_writable; }
    [[nodiscard]] const asf::Header& header() const { return *m_header; }
    // For a change: a file that was changed is written by flush().
    asf::Header& changedHeader() {
        m_changed = true;
        return *m_header;
    }

private:
    std::filesystem::path m_path;
    UniqueFile m_lock;
    std::optional<asf::Header> m_header;
    bool m_writable = false;
    bool m_changed = false;
};

}  // namespace orvane::standin
