#pragma once

// A media item of a player in memory: attributes in a map, every write written down, each call
// made to fail on demand. Lives on the stack; references are counted but free nothing.

#include <windows.h>

#include <wmp.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvane::test {

// COM interfaces have no virtual destructor by design.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class FakeMedia final : public IWMPMedia3 {
public:
    std::wstring sourcePath = L"C:\\Music\\track.wma";
    bool sourcePathFails = false;
    bool offersMedia3 = true;
    std::map<std::wstring, std::wstring> attributes;
    std::set<std::wstring> unreadable;  // getItemInfo fails
    std::set<std::wstring> refused;     // setItemInfo fails
    std::vector<std::pair<std::wstring, std::wstring>> writes;
    LONG references = 0;

    // ---- IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        *out = nullptr;
        if (iid == __uuidof(IWMPMedia3) && !offersMedia3) return E_NOINTERFACE;
        if (iid != IID_IUnknown && iid != __uuidof(IWMPMedia) && iid != __uuidof(IWMPMedia3))
            return E_NOINTERFACE;
        *out = static_cast<IWMPMedia3*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }

    // ---- what is used
    HRESULT STDMETHODCALLTYPE get_sourceURL(BSTR* out) override {
        *out = nullptr;
        if (sourcePathFails) return E_FAIL;
        *out = SysAllocString(sourcePath.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE getItemInfo(BSTR name, BSTR* out) override {
        *out = nullptr;
        const std::wstring key = name ? name : L"";
        if (unreadable.contains(key)) return E_FAIL;
        const std::wstring value = attributes.contains(key) ? attributes[key] : std::wstring();
        *out = SysAllocStringLen(value.data(), static_cast<UINT>(value.size()));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE setItemInfo(BSTR name, BSTR value) override {
        const std::wstring key = name ? name : L"";
        writes.emplace_back(key, value ? value : L"");
        if (refused.contains(key)) return E_FAIL;
        attributes[key] = writes.back().second;
        return S_OK;
    }

    // ---- what is not
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_isIdentical(IWMPMedia*, VARIANT_BOOL*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_name(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_name(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_imageSourceWidth(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_imageSourceHeight(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_markerCount(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getMarkerTime(LONG, double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getMarkerName(LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_duration(double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_durationString(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_attributeCount(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getAttributeName(LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getItemInfoByAtom(LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE isMemberOf(IWMPPlaylist*, VARIANT_BOOL*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE isReadOnlyItem(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_error(IWMPErrorItem**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getAttributeCountByType(BSTR, BSTR, LONG*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE getItemInfoByType(BSTR, BSTR, LONG, VARIANT*) override {
        return E_NOTIMPL;
    }
};

#pragma GCC diagnostic pop

}  // namespace orvane::test
