#include "standins/player/objects.h"

#include <utility>

namespace orvane::standin {

namespace {

constexpr IID kOwnPlaylist = {
    0x6d2f5b1e, 0x3a70, 0x4c5f, {0x9b, 0x44, 0x10, 0x8e, 0x5d, 0x27, 0xc6, 0x32}};

class PlaylistObject final : public DispatchObject<IWMPPlaylist> {
public:
    PlaylistObject(ModelPtr model, PlaylistPtr playlist)
        : m_model(std::move(model)), m_playlist(std::move(playlist)) {}

    [[nodiscard]] const PlaylistPtr& playlist() const { return m_playlist; }

    STDMETHOD(get_count)(LONG* out) override {
        return m_model->give("IWMPPlaylist::get_count", out, [&] {
            *out = static_cast<LONG>(m_playlist->items->size());
            return S_OK;
        });
    }
    STDMETHOD(get_Item)(LONG index, IWMPMedia** out) override {
        return m_model->give("IWMPPlaylist::get_Item", out, [&]() -> HRESULT {
            const TrackList& items = *m_playlist->items;
            if (index < 0 || static_cast<size_t>(index) >= items.size()) return E_INVALIDARG;
            *out = makeMedia(m_model, items[static_cast<size_t>(index)]).Detach();
            return S_OK;
        });
    }
    STDMETHOD(appendItem)(IWMPMedia* media) override {
        const TrackPtr track = trackOf(media);
        const CComPtr<IWMPPlaylist> self(this);
        return m_model->serve("IWMPPlaylist::appendItem", [&]() -> HRESULT {
            // Only the user's own playlists can be changed, not what a query gave.
            if (m_playlist->isView) return E_ACCESSDENIED;
            if (!track) return E_INVALIDARG;
            m_playlist->items->push_back(track);
            m_model->fire([self](IWMPEvents& sink) { sink.PlaylistChange(self, wmplcAppend); });
            return S_OK;
        });
    }

    ORVANE_PROPERTY_NOT_MADE(name, BSTR)
    STDMETHOD(insertItem)(LONG, IWMPMedia*) override { return E_NOTIMPL; }
    STDMETHOD(removeItem)(IWMPMedia*) override { return E_NOTIMPL; }
    STDMETHOD(clear)() override { return E_NOTIMPL; }
    STDMETHOD(get_attributeCount)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(get_attributeName)(LONG, BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(getItemInfo)(BSTR, BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(setItemInfo)(BSTR, BSTR) override { return E_NOTIMPL; }
    STDMETHOD(get_isIdentical)(IWMPPlaylist*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(moveItem)(LONG, LONG) override { return E_NOTIMPL; }

protected:
    void* find(REFIID iid) override {
        if (iid == kOwnPlaylist) return this;
        return match<IUnknown, IDispatch, IWMPPlaylist>(iid, static_cast<IWMPPlaylist*>(this));
    }

private:
    const ModelPtr m_model;
    const PlaylistPtr m_playlist;
};

class PlaylistArrayObject final : public DispatchObject<IWMPPlaylistArray> {
public:
    PlaylistArrayObject(ModelPtr model, std::vector<PlaylistPtr> playlists)
        : m_model(std::move(model)), m_playlists(std::move(playlists)) {}

    STDMETHOD(get_count)(LONG* out) override {
        return m_model->give("IWMPPlaylistArray::get_count", out, [&] {
            *out = static_cast<LONG>(m_playlists.size());
            return S_OK;
        });
    }
    STDMETHOD(Item)(LONG index, IWMPPlaylist** out) override {
        return m_model->give("IWMPPlaylistArray::Item", out, [&]() -> HRESULT {
            if (index < 0 || static_cast<size_t>(index) >= m_playlists.size()) return E_INVALIDARG;
            *out = makePlaylist(m_model, m_playlists[static_cast<size_t>(index)]).Detach();
            return S_OK;
        });
    }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPPlaylistArray>(iid,
                                                             static_cast<IWMPPlaylistArray*>(this));
    }

private:
    const ModelPtr m_model;
    const std::vector<PlaylistPtr> m_playlists;
};

}  // namespace

CComPtr<IWMPPlaylist> makePlaylist(const ModelPtr& model, const PlaylistPtr& playlist) {
    return makeObject<PlaylistObject, IWMPPlaylist>(model, playlist);
}

PlaylistPtr playlistOf(IUnknown* playlist) {
    const auto own = ownObject<PlaylistObject>(playlist, kOwnPlaylist);
    return own ? own->playlist() : nullptr;
}

CComPtr<IWMPPlaylistArray> makePlaylistArray(const ModelPtr& model,
                                             const std::vector<PlaylistPtr>& playlists) {
    return makeObject<PlaylistArrayObject, IWMPPlaylistArray>(model, playlists);
}

}  // namespace orvane::standin
