#pragma once

// The attribute part of a reader or an editor: IWMHeaderInfo3 over an opened file, as far as this
// plug-in asks for it; all else is E_NOTIMPL.
//
// The runtime's limits are kept, because callers run into them:
//  - lengths are 16-bit in the methods of IWMHeaderInfo: what is larger cannot be asked for there,
//    and asking is NS_E_SDK_BUFFERTOOSMALL that leaves type and length alone;
//  - GetAttributeIndices gives descending indices, and DeleteAttribute moves what follows the
//    deleted attribute down by one: deleting in the order given is right, ascending is not;
//  - indices count the attributes of one stream, or of all with stream 0xFFFF;
//  - a reader changes nothing (E_NOTIMPL), and only language 0 can be added.

#include <windows.h>

#include "platform/wm_format.h"
#include "standins/format/opened_file.h"

namespace orvane::standin {

// A reader's and an editor's base; they bring the IUnknown methods.
class HeaderInfo : public IWMHeaderInfo3 {
public:
    // IWMHeaderInfo
    STDMETHOD(GetAttributeCount)(WORD, WORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetAttributeByIndex)
    (WORD, WORD*, WCHAR*, WORD*, WMT_ATTR_DATATYPE*, BYTE*, WORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetAttributeByName)
    (WORD* stream, LPCWSTR name, WMT_ATTR_DATATYPE* type, BYTE* value, WORD* length) override;
    STDMETHOD(SetAttribute)
    (WORD, LPCWSTR, WMT_ATTR_DATATYPE, const BYTE*, WORD) override { return E_NOTIMPL; }
    STDMETHOD(GetMarkerCount)(WORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetMarker)(WORD, WCHAR*, WORD*, QWORD*) override { return E_NOTIMPL; }
    STDMETHOD(AddMarker)(LPCWSTR, QWORD) override { return E_NOTIMPL; }
    STDMETHOD(RemoveMarker)(WORD) override { return E_NOTIMPL; }
    STDMETHOD(GetScriptCount)(WORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetScript)(WORD, WCHAR*, WORD*, WCHAR*, WORD*, QWORD*) override { return E_NOTIMPL; }
    STDMETHOD(AddScript)(LPCWSTR, LPCWSTR, QWORD) override { return E_NOTIMPL; }
    STDMETHOD(RemoveScript)(WORD) override { return E_NOTIMPL; }
    // IWMHeaderInfo2
    STDMETHOD(GetCodecInfoCount)(DWORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetCodecInfo)
    (DWORD, WORD*, WCHAR*, WORD*, WCHAR*, WMT_CODEC_INFO_TYPE*, WORD*, BYTE*) override {
        return E_NOTIMPL;
    }
    // IWMHeaderInfo3
    STDMETHOD(GetAttributeCountEx)(WORD, WORD*) override { return E_NOTIMPL; }
    STDMETHOD(GetAttributeIndices)
    (WORD stream, LPCWSTR name, WORD* language, WORD* indices, WORD* count) override;
    STDMETHOD(GetAttributeByIndexEx)
    (WORD stream, WORD index, LPWSTR name, WORD* nameLength, WMT_ATTR_DATATYPE* type,
     WORD* language, BYTE* value, DWORD* length) override;
    STDMETHOD(ModifyAttribute)
    (WORD, WORD, WMT_ATTR_DATATYPE, WORD, const BYTE*, DWORD) override { return E_NOTIMPL; }
    STDMETHOD(AddAttribute)
    (WORD stream, LPCWSTR name, WORD* index, WMT_ATTR_DATATYPE type, WORD language,
     const BYTE* value, DWORD length) override;
    STDMETHOD(DeleteAttribute)(WORD stream, WORD index) override;
    STDMETHOD(AddCodecInfo)
    (LPCWSTR, LPCWSTR, WMT_CODEC_INFO_TYPE, WORD, BYTE*) override { return E_NOTIMPL; }

protected:
    enum class Kind { reader, editor };
    explicit HeaderInfo(Kind kind) : m_kind(kind) {}
    ~HeaderInfo() = default;

    OpenedFile& file() { return m_file; }

private:
    HRESULT checkChangeable() const;

    OpenedFile m_file;
    const Kind m_kind;
};

}  // namespace orvane::standin
