#include "standins/format/metadata_editor.h"

#include "standins/format/guarded.h"

namespace orvane::standin {

bool MetadataEditor::answersFor(REFIID id) {
    return id == __uuidof(IWMMetadataEditor) || id == __uuidof(IWMMetadataEditor2);
}

STDMETHODIMP MetadataEditor::Open(const WCHAR* path) {
    return OpenEx(path, GENERIC_READ | GENERIC_WRITE, 0);
}

STDMETHODIMP MetadataEditor::OpenEx(const WCHAR* path, DWORD access, DWORD share) {
    return guarded([&]() -> HRESULT {
        constexpr DWORD known = GENERIC_READ | GENERIC_WRITE;
        if ((access & known) == 0 || (access & ~known) != 0) return E_INVALIDARG;
        const bool writes = (access & GENERIC_WRITE) != 0;
        const DWORD wanted = writes ? 0 : FILE_SHARE_READ;
        if (share != wanted) return E_INVALIDARG;
        return file().open(path, access, share);
    });
}

STDMETHODIMP MetadataEditor::Close() {
    if (!file().isOpen()) return ASF_E_INVALIDSTATE;
    file().close();
    return S_OK;
}

STDMETHODIMP MetadataEditor::Flush() {
    return guarded([&] { return file().flush(); });
}

}  // namespace orvane::standin
