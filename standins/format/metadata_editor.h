#pragma once

// The metadata editor: opens a file, changes its attributes, writes them with Flush. Released
// without Flush it leaves the file as it was.

#include <windows.h>

#include "standins/format/file_object.h"

namespace orvane::standin {

class MetadataEditor final : public FileObject<MetadataEditor, IWMMetadataEditor2> {
public:
    MetadataEditor() : FileObject(Kind::editor) {}
    static bool answersFor(REFIID id);

    // For reading and writing, shared with nobody who writes.
    STDMETHOD(Open)(const WCHAR* path) override;
    // Writing goes with no sharing, reading alone with FILE_SHARE_READ: E_INVALIDARG otherwise, as
    // the runtime's documentation has it.
    STDMETHOD(OpenEx)(const WCHAR* path, DWORD access, DWORD share) override;
    STDMETHOD(Close)() override;
    // Writes what was changed and closes the file.
    STDMETHOD(Flush)() override;
};

}  // namespace orvane::standin
