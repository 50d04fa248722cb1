#include "standins/player/objects.h"

#include <olectl.h>

#include <utility>

namespace orvane::standin {

namespace {

class CoreObject final : public DispatchObject<IWMPCore3, IConnectionPointContainer> {
public:
    explicit CoreObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(put_URL)(BSTR url) override {
        return m_model->serve("IWMPCore::put_URL",
                              [&] { return m_model->playback.openUrl(textOf(url)); });
    }
    STDMETHOD(get_playState)(WMPPlayState* out) override {
        return m_model->give("IWMPCore::get_playState", out, [&] {
            *out = m_model->playback.state();
            return S_OK;
        });
    }
    STDMETHOD(get_controls)(IWMPControls** out) override {
        return give("IWMPCore::get_controls", out, [&] { return makeControls(m_model); });
    }
    STDMETHOD(get_settings)(IWMPSettings** out) override {
        return give("IWMPCore::get_settings", out, [&] { return makeSettings(m_model); });
    }
    STDMETHOD(get_currentMedia)(IWMPMedia** out) override {
        return give("IWMPCore::get_currentMedia", out, [&] {
            const TrackPtr& track = m_model->playback.current();
            return track ? makeMedia(m_model, track) : CComPtr<IWMPMedia>();
        });
    }
    STDMETHOD(get_mediaCollection)(IWMPMediaCollection** out) override {
        return give("IWMPCore::get_mediaCollection", out,
                    [&] { return makeMediaCollection(m_model); });
    }
    STDMETHOD(get_playlistCollection)(IWMPPlaylistCollection** out) override {
        return give("IWMPCore::get_playlistCollection", out,
                    [&] { return makePlaylistCollection(m_model); });
    }
    STDMETHOD(get_Error)(IWMPError** out) override {
        return give("IWMPCore::get_Error", out, [&] { return makeErrorList(m_model); });
    }

    STDMETHOD(get_URL)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(get_openState)(WMPOpenState*) override { return E_NOTIMPL; }
    STDMETHOD(put_currentMedia)(IWMPMedia*) override { return E_NOTIMPL; }
    STDMETHOD(get_versionInfo)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(close)() override { return E_NOTIMPL; }
    STDMETHOD(launchURL)(BSTR) override { return E_NOTIMPL; }
    STDMETHOD(get_network)(IWMPNetwork**) override { return E_NOTIMPL; }
    ORVANE_PROPERTY_NOT_MADE(currentPlaylist, IWMPPlaylist*)
    STDMETHOD(get_cdromCollection)(IWMPCdromCollection**) override { return E_NOTIMPL; }
    STDMETHOD(get_closedCaption)(IWMPClosedCaption**) override { return E_NOTIMPL; }
    STDMETHOD(get_isOnline)(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(get_status)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(get_dvd)(IWMPDVD**) override { return E_NOTIMPL; }
    STDMETHOD(newPlaylist)(BSTR, BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(newMedia)(BSTR, IWMPMedia**) override { return E_NOTIMPL; }

    STDMETHOD(EnumConnectionPoints)(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    STDMETHOD(FindConnectionPoint)(REFIID iid, IConnectionPoint** out) override {
        return m_model->give("IConnectionPointContainer::FindConnectionPoint", out,
                             [&]() -> HRESULT {
                                 if (iid != __uuidof(IWMPEvents)) return CONNECT_E_NOCONNECTION;
                                 *out = makeConnectionPoint(m_model).Detach();
                                 return S_OK;
                             });
    }

protected:
    void* find(REFIID iid) override {
        if (iid == __uuidof(IConnectionPointContainer) &&
            m_model->serve("IWMPCore::QueryInterface", [] { return S_OK; }) == S_OK)
            return static_cast<IConnectionPointContainer*>(this);
        return match<IUnknown, IDispatch, IWMPCore, IWMPCore2, IWMPCore3>(
            iid, static_cast<IWMPCore3*>(this));
    }

private:
    // Serves a call that hands out an object, or success with none.
    template <typename Interface, typename Make>
    HRESULT give(const char* call, Interface** out, Make make) {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return m_model->serve(call, [&] {
            *out = make().Detach();
            return S_OK;
        });
    }

    const ModelPtr m_model;
};

}  // namespace

CComPtr<IWMPCore> makeCore(const ModelPtr& model) {
    return makeObject<CoreObject, IWMPCore>(model);
}

}  // namespace orvane::standin
