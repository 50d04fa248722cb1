#pragma once

// The metadata editor: opens a file, changes its attributes, writes them with Flush. Released
// without Flush it leaves the file as it was.

#include <windows.h>

#include "standins/format/file_object.h"

namespace orvane::standin {

class MetadataEditor final
    : public FileObject<MetadataEditor, IWMMetadataEditor2, IWMMetadataEditor> {
public:
    MetadataEditor() : FileObject(Kind::editor) {}

    // For reading and writing; no other handle may write to the file.
    STDMETHOD(Open)(const WCHAR* path) override {
        return OpenEx(path, GENERIC_READ | GENERIC_WRITE, 0);
    }
    // Writing goes with no sharing, reading alone with FILE_SHARE_READ: E_INVALIDARG otherwise, as
    // the runtime's documentation has it.
    STDMETHOD(OpenEx)(const WCHAR* path, DWORD access, DWORD share) override {
        return guarded([&]() -> HRESULT {
            constexpr DWORD known = GENERIC_READ | GENERIC_WRITE;
            if ((access & known) == 0 || (access & ~known) != 0) return E_INVALIDARG;
            const DWORD wanted = (access & GENERIC_WRITE) != 0 ? 0 : FILE_SHARE_READ;
            return share == wanted ? file().open(path, access, share) : E_INVALIDARG;
        });
    }
    // Writes what was changed and closes the file.
    STDMETHOD(Flush)() override {
        return guarded([&] { return file().flush(); });
    }
};

}  // namespace orvane::standin
