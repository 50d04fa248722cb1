#pragma once

// The player's core with knobs: how it takes a subscriber, and what its calls do. On the stack or
// on the heap of a test; it counts its references but never deletes itself.

#include <windows.h>

#include <olectl.h>
#include <wmp.h>

#include <atomic>
#include <functional>
#include <set>

#include "platform/wmp_plugin_ui.h"

namespace orvane::test {

// COM interfaces have no virtual destructor by design; nor have the tests' own objects.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class FakeCore : public IWMPCore, public IConnectionPointContainer, public IConnectionPoint {
public:
    // Knobs.
    bool hasConnectionPoints = true;
    HRESULT findResult = S_OK;
    HRESULT adviseResult = S_OK;
    DWORD cookie = 77;  // of the next subscription; 0: none is given
    std::function<void()> duringAdvise;
    std::function<void()> duringUnadvise;
    std::function<HRESULT(WMPPlayState*)> playState;  // on the calling thread

    // What happened.
    std::atomic<LONG> references{1};
    std::atomic<int> playStateCalls{0};
    int unadvised = 0;           // with the right cookie
    IWMPEvents* sink = nullptr;  // not counted, as nothing is delivered after Unadvise

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        *object = nullptr;
        if (IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, __uuidof(IWMPCore)))
            *object = static_cast<IWMPCore*>(this);
        else if (hasConnectionPoints && IsEqualGUID(iid, __uuidof(IConnectionPointContainer)))
            *object = static_cast<IConnectionPointContainer*>(this);
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHOD_(ULONG, AddRef)() override { return static_cast<ULONG>(++references); }
    STDMETHOD_(ULONG, Release)() override { return static_cast<ULONG>(--references); }

    // IConnectionPointContainer
    STDMETHOD(EnumConnectionPoints)(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    STDMETHOD(FindConnectionPoint)(REFIID iid, IConnectionPoint** point) override {
        *point = nullptr;
        if (FAILED(findResult)) return findResult;
        if (!IsEqualGUID(iid, __uuidof(IWMPEvents))) return CONNECT_E_NOCONNECTION;
        *point = this;
        AddRef();
        return S_OK;
    }

    // IConnectionPoint
    STDMETHOD(GetConnectionInterface)(IID*) override { return E_NOTIMPL; }
    STDMETHOD(GetConnectionPointContainer)(IConnectionPointContainer**) override {
        return E_NOTIMPL;
    }
    STDMETHOD(Advise)(IUnknown* subscriber, DWORD* cookieOut) override {
        *cookieOut = 0;
        if (duringAdvise) duringAdvise();
        if (FAILED(adviseResult)) return adviseResult;
        void* events = nullptr;
        const HRESULT result = subscriber->QueryInterface(__uuidof(IWMPEvents), &events);
        if (FAILED(result)) return result;
        sink = static_cast<IWMPEvents*>(events);
        sink->Release();
        if (cookie == 0) return S_OK;
        m_cookies.insert(cookie);
        *cookieOut = cookie++;
        return S_OK;
    }
    STDMETHOD(Unadvise)(DWORD given) override {
        if (m_cookies.erase(given) == 0) return CONNECT_E_NOCONNECTION;
        if (m_cookies.empty()) sink = nullptr;
        ++unadvised;
        if (duringUnadvise) duringUnadvise();
        return S_OK;
    }
    STDMETHOD(EnumConnections)(IEnumConnections**) override { return E_NOTIMPL; }

    // IDispatch
    STDMETHOD(GetTypeInfoCount)(UINT*) override { return E_NOTIMPL; }
    STDMETHOD(GetTypeInfo)(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHOD(GetIDsOfNames)(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHOD(Invoke)
    (DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

    // IWMPCore
    STDMETHOD(get_playState)(WMPPlayState* state) override {
        ++playStateCalls;
        return playState ? playState(state) : E_FAIL;
    }
    STDMETHOD(close)() override { return E_NOTIMPL; }
    STDMETHOD(get_URL)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(put_URL)(BSTR) override { return E_NOTIMPL; }
    STDMETHOD(get_openState)(WMPOpenState*) override { return E_NOTIMPL; }
    STDMETHOD(get_controls)(IWMPControls**) override { return E_NOTIMPL; }
    STDMETHOD(get_settings)(IWMPSettings**) override { return E_NOTIMPL; }
    STDMETHOD(get_currentMedia)(IWMPMedia**) override { return E_NOTIMPL; }
    STDMETHOD(put_currentMedia)(IWMPMedia*) override { return E_NOTIMPL; }
    STDMETHOD(get_mediaCollection)(IWMPMediaCollection**) override { return E_NOTIMPL; }
    STDMETHOD(get_playlistCollection)(IWMPPlaylistCollection**) override { return E_NOTIMPL; }
    STDMETHOD(get_versionInfo)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(launchURL)(BSTR) override { return E_NOTIMPL; }
    STDMETHOD(get_network)(IWMPNetwork**) override { return E_NOTIMPL; }
    STDMETHOD(get_currentPlaylist)(IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(put_currentPlaylist)(IWMPPlaylist*) override { return E_NOTIMPL; }
    STDMETHOD(get_cdromCollection)(IWMPCdromCollection**) override { return E_NOTIMPL; }
    STDMETHOD(get_closedCaption)(IWMPClosedCaption**) override { return E_NOTIMPL; }
    STDMETHOD(get_isOnline)(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(get_Error)(IWMPError**) override { return E_NOTIMPL; }
    STDMETHOD(get_status)(BSTR*) override { return E_NOTIMPL; }

private:
    std::set<DWORD> m_cookies;
};

}  // namespace orvane::test
