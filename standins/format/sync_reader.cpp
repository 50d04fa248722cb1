#include "standins/format/sync_reader.h"

#include "standins/format/guarded.h"

namespace orvane::standin {

bool SyncReader::answersFor(REFIID id) { return id == __uuidof(IWMSyncReader); }

STDMETHODIMP SyncReader::Open(const WCHAR* path) {
    return guarded([&] { return file().open(path, GENERIC_READ, FILE_SHARE_READ); });
}

STDMETHODIMP SyncReader::Close() {
    if (!file().isOpen()) return ASF_E_INVALIDSTATE;
    file().close();
    return S_OK;
}

}  // namespace orvane::standin
