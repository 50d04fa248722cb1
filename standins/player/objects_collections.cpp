#include "standins/player/objects.h"

#include <utility>

namespace orvane::standin {

namespace {

class MediaCollectionObject final : public DispatchObject<IWMPMediaCollection> {
public:
    explicit MediaCollectionObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(getAll)(IWMPPlaylist** out) override {
        return m_model->give("IWMPMediaCollection::getAll", out, [&] {
            *out = makePlaylist(m_model, m_model->library.all()).Detach();
            return S_OK;
        });
    }
    STDMETHOD(getByAttribute)(BSTR attribute, BSTR value, IWMPPlaylist** out) override {
        return m_model->give("IWMPMediaCollection::getByAttribute", out, [&]() -> HRESULT {
            // Paths come from an index; nobody looks for anything else.
            if (textOf(attribute) != L"SourceURL") return E_NOTIMPL;
            const PlaylistPtr found = m_model->library.withPath(textOf(value));
            *out = makePlaylist(m_model, found).Detach();
            return S_OK;
        });
    }

    STDMETHOD(add)(BSTR path, IWMPMedia** out) override {
        return m_model->give("IWMPMediaCollection::add", out, [&]() -> HRESULT {
            Library& library = m_model->library;
            TrackPtr track = library.firstWithPath(textOf(path));
            if (!track && GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES)
                return HRESULT_FROM_WIN32(GetLastError());
            if (!track) track = library.add(textOf(path));
            *out = makeMedia(m_model, track).Detach();
            return S_OK;
        });
    }
    STDMETHOD(remove)(IWMPMedia* media, VARIANT_BOOL) override {
        const TrackPtr track = trackOf(media);
        return m_model->serve("IWMPMediaCollection::remove", [&] {
            return track && m_model->library.remove(track) ? S_OK : E_INVALIDARG;
        });
    }

    STDMETHOD(getByName)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(getByGenre)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(getByAuthor)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
    STDMETHOD(getByAlbum)(BSTR, IWMPPlaylist**) override { return E_NOTIMPL; }
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
        return m_model->give("IWMPPlaylistCollection::newPlaylist", out, [&]() -> HRESULT {
            const std::wstring text = textOf(name);
            if (text.empty()) return E_INVALIDARG;
            *out = makePlaylist(m_model, m_model->library.makePlaylist(text)).Detach();
            m_model->report("playlist made: " + toUtf8(text));
            m_model->fire([text](IWMPEvents& sink) {
                sink.PlaylistCollectionPlaylistAdded(CComBSTR(text.c_str()));
                sink.PlaylistCollectionChange();
            });
            return S_OK;
        });
    }
    STDMETHOD(getByName)(BSTR name, IWMPPlaylistArray** out) override {
        return m_model->give("IWMPPlaylistCollection::getByName", out, [&] {
            *out =
                makePlaylistArray(m_model, m_model->library.playlistsNamed(textOf(name))).Detach();
            return S_OK;
        });
    }

    STDMETHOD(getAll)(IWMPPlaylistArray**) override { return E_NOTIMPL; }
    STDMETHOD(remove)(IWMPPlaylist* playlist) override {
        const PlaylistPtr known = playlistOf(playlist);
        return m_model->serve("IWMPPlaylistCollection::remove", [&] {
            return known && m_model->library.removePlaylist(known) ? S_OK : E_INVALIDARG;
        });
    }
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

CComPtr<IWMPMediaCollection> makeMediaCollection(const ModelPtr& model) {
    return makeObject<MediaCollectionObject, IWMPMediaCollection>(model);
}

CComPtr<IWMPPlaylistCollection> makePlaylistCollection(const ModelPtr& model) {
    return makeObject<PlaylistCollectionObject, IWMPPlaylistCollection>(model);
}

}  // namespace orvane::standin
