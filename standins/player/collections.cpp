#include "standins/player/collections.h"

#include <utility>

#include "standins/player/playlist_object.h"

namespace orvane::standin {

namespace {

class MediaCollectionObject final : public DispatchObject<IWMPMediaCollection> {
public:
    explicit MediaCollectionObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(getAll)(IWMPPlaylist** out) override {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return m_model->serve("IWMPMediaCollection::getAll", [&] {
            *out = makePlaylistObject(m_model, m_model->library.all()).detach();
            return S_OK;
        });
    }
    STDMETHOD(getByAttribute)(BSTR attribute, BSTR value, IWMPPlaylist** out) override {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return m_model->serve("IWMPMediaCollection::getByAttribute", [&]() -> HRESULT {
            // Paths come from an index; nobody looks for anything else.
            if (textOf(attribute) != L"SourceURL") return E_NOTIMPL;
            const PlaylistPtr found = m_model->library.withPath(textOf(value));
            *out = makePlaylistObject(m_model, found).detach();
            return S_OK;
        });
    }

    STDMETHOD(add)(BSTR, IWMPMedia**) override { return E_NOTIMPL; }
    STDMETHOD(getByName)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(getByGenre)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(getByAuthor)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(getByAlbum)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(remove)(IWMPMedia*, VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHOD(getAttributeStringCollection)(BSTR, BSTR, IWMPStringCollection**) override {
        return E_NOTIMPL;
    }
    STDMETHOD(getMediaAtom)(BSTR, LONG*) override { return E_NOTIMPL; }
    STDMETHOD(setDeleted)(IWMPMedia*, VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHOD(isDeleted)(IWMPMedia*, VARIANT_BOOL*) override { return E_NOTIMPL; }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPMediaCollection>(
            iid, static_cast<IWMPMediaCollection*>(this));
    }

private:
    const ModelPtr m_model;
};

class PlaylistCollectionObject final : public DispatchObject<IWMPPlaylistCollection> {
public:
    explicit PlaylistCollectionObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(newPlaylist)(BSTR name, IWMPPlaylist** out) override {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return m_model->serve("IWMPPlaylistCollection::newPlaylist", [&]() -> HRESULT {
            const std::wstring text = textOf(name);
            if (text.empty()) return E_INVALIDARG;
            *out = makePlaylistObject(m_model, m_model->library.makePlaylist(text)).detach();
            m_model->report("playlist made: " + toUtf8(text));
            m_model->fire([text](IWMPEvents& sink) {
                sink.PlaylistCollectionPlaylistAdded(Text(text).get());
                sink.PlaylistCollectionChange();
            });
            return S_OK;
        });
    }
    STDMETHOD(getByName)(BSTR name, IWMPPlaylistArray** out) override {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return m_model->serve("IWMPPlaylistCollection::getByName", [&] {
            *out =
                makePlaylistArray(m_model, m_model->library.playlistsNamed(textOf(name))).detach();
            return S_OK;
        });
    }

    STDMETHOD(getAll)(IWMPPlaylistArray**) override { return E_NOTIMPL; }
    STDMETHOD(remove)(IWMPPlaylist*) override { return E_NOTIMPL; }
    STDMETHOD(setDeleted)(IWMPPlaylist*, VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHOD(isDeleted)(IWMPPlaylist*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(importPlaylist)(IWMPPlaylist*, IWMPPlaylist**) override { return E_NOTIMPL; }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPPlaylistCollection>(
            iid, static_cast<IWMPPlaylistCollection*>(this));
    }

private:
    const ModelPtr m_model;
};

}  // namespace

ComRef<IWMPMediaCollection> makeMediaCollection(ModelPtr model) {
    auto object = makeObject<MediaCollectionObject>(std::move(model));
    return ComRef<IWMPMediaCollection>(object.get());
}

ComRef<IWMPPlaylistCollection> makePlaylistCollection(ModelPtr model) {
    auto object = makeObject<PlaylistCollectionObject>(std::move(model));
    return ComRef<IWMPPlaylistCollection>(object.get());
}

}  // namespace orvane::standin
