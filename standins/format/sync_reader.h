#pragma once

// The synchronous reader: opens a file and shows its header. It gives no samples (E_NOTIMPL).

#include <windows.h>

#include "standins/format/file_object.h"

namespace orvane::standin {

class SyncReader final : public FileObject<SyncReader, IWMSyncReader> {
public:
    SyncReader() : FileObject(Kind::reader) {}

    STDMETHOD(Open)(const WCHAR* path) override {
        return guarded([&] { return file().open(path, GENERIC_READ, FILE_SHARE_READ); });
    }
    STDMETHOD(SetRange)(QWORD, LONGLONG) override { return E_NOTIMPL; }
    STDMETHOD(SetRangeByFrame)(WORD, QWORD, LONGLONG) override { return E_NOTIMPL; }
    STDMETHOD(GetNextSample)
    (WORD, INSSBuffer**, QWORD*, QWORD*, DWORD*, DWORD*, WORD*) override { return E_NOTIMPL; }
    STDMETHOD(SetStreamsSelected)(WORD, WORD*, WMT_STREAM_SELECTION*) override { return E_NOTIMPL; }
    STDMETHOD(GetStreamSelected)(WORD, WMT_STREAM_SELECTION*) override { return E_NOTIMPL; }
    STDMETHOD(SetReadStreamSamples)(WORD, WINBOOL) override { return E_NOTIMPL; }
    STDMETHOD(GetReadStreamSamples)(WORD, WINBOOL*) override { return E_NOTIMPL; }
    STDMETHOD(GetOutputSetting)
    (DWORD, LPCWSTR, WMT_ATTR_DATATYPE*, BYTE*, WORD*) override { return E_NOTIMPL; }
    STDMETHOD(SetOutputSetting)
    (DWORD, LPCWSTR, WMT_ATTR_DATATYPE, const BYTE*, WORD) override { return E_NOTIMPL; }
    STDMETHOD(GetOutputCount)(DWORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetOutputProps)(DWORD, IWMOutputMediaProps**) override { return E_NOTIMPL; }
    STDMETHOD(SetOutputProps)(DWORD, IWMOutputMediaProps*) override { return E_NOTIMPL; }
    STDMETHOD(GetOutputFormatCount)(DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetOutputFormat)(DWORD, DWORD, IWMOutputMediaProps**) override { return E_NOTIMPL; }
    STDMETHOD(GetOutputNumberForStream)(WORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetStreamNumberForOutput)(DWORD, WORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetMaxOutputSampleSize)(DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetMaxStreamSampleSize)(WORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHOD(OpenStream)(IStream*) override { return E_NOTIMPL; }
};

}  // namespace orvane::standin
