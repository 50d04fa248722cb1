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
#define ORVANE_UNUSED(name, ...) \
    HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { return E_NOTIMPL; }
    ORVANE_UNUSED(GetTypeInfoCount, UINT*)
    ORVANE_UNUSED(GetTypeInfo, UINT, LCID, ITypeInfo**)
    ORVANE_UNUSED(GetIDsOfNames, REFIID, LPOLESTR*, UINT, LCID, DISPID*)
    ORVANE_UNUSED(Invoke, DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
    ORVANE_UNUSED(get_isIdentical, IWMPMedia*, VARIANT_BOOL*)
    ORVANE_UNUSED(get_name, BSTR*)
    ORVANE_UNUSED(put_name, BSTR)
    ORVANE_UNUSED(get_imageSourceWidth, LONG*)
    ORVANE_UNUSED(get_imageSourceHeight, LONG*)
    ORVANE_UNUSED(get_markerCount, LONG*)
    ORVANE_UNUSED(getMarkerTime, LONG, double*)
    ORVANE_UNUSED(getMarkerName, LONG, BSTR*)
    ORVANE_UNUSED(get_duration, double*)
    ORVANE_UNUSED(get_durationString, BSTR*)
    ORVANE_UNUSED(get_attributeCount, LONG*)
    ORVANE_UNUSED(getAttributeName, LONG, BSTR*)
    ORVANE_UNUSED(getItemInfoByAtom, LONG, BSTR*)
    ORVANE_UNUSED(isMemberOf, IWMPPlaylist*, VARIANT_BOOL*)
    ORVANE_UNUSED(isReadOnlyItem, BSTR, VARIANT_BOOL*)
    ORVANE_UNUSED(get_error, IWMPErrorItem**)
    ORVANE_UNUSED(getAttributeCountByType, BSTR, BSTR, LONG*)
    ORVANE_UNUSED(getItemInfoByType, BSTR, BSTR, LONG, VARIANT*)
#undef ORVANE_UNUSED
};

#pragma GCC diagnostic pop

}  // namespace orvane::test
