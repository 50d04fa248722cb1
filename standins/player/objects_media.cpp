#include "standins/player/objects.h"

#include <utility>

#include "standins/player/media_base.h"

namespace orvane::standin {

namespace {

// Asked for privately, to know our own objects from other people's.
constexpr IID kOwnMedia = {
    0x6d2f5b1e, 0x3a70, 0x4c5f, {0x9b, 0x44, 0x10, 0x8e, 0x5d, 0x27, 0xc6, 0x31}};

class MediaObject final : public MediaBase {
public:
    MediaObject(ModelPtr model, TrackPtr track)
        : m_model(std::move(model)), m_track(std::move(track)) {}

    [[nodiscard]] const TrackPtr& track() const { return m_track; }

    STDMETHOD(get_isIdentical)(IWMPMedia* other, VARIANT_BOOL* out) override {
        if (other == nullptr || out == nullptr) return E_POINTER;
        const TrackPtr theirs = trackOf(other);
        return m_model->serve("IWMPMedia::get_isIdentical", [&] {
            *out = theirs == m_track ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        });
    }
    STDMETHOD(get_sourceURL)(BSTR* out) override {
        return m_model->give("IWMPMedia::get_sourceURL", out,
                             [&] { return giveText(m_track->path, out); });
    }
    STDMETHOD(getItemInfo)(BSTR attribute, BSTR* out) override {
        return m_model->give("IWMPMedia::getItemInfo", out, [&]() -> HRESULT {
            const std::wstring name = textOf(attribute);
            if (m_model->options.failReads.contains(name)) return E_FAIL;
            std::wstring value;
            const HRESULT result = m_model->tags.read(*m_track, name, value);
            return FAILED(result) ? result : giveText(value, out);
        });
    }
    STDMETHOD(setItemInfo)(BSTR attribute, BSTR text) override {
        const CComPtr<IWMPMedia3> self(this);
        return m_model->serve("IWMPMedia::setItemInfo", [&]() -> HRESULT {
            const std::wstring name = textOf(attribute);
            const HRESULT result = m_model->tags.write(*m_track, name, textOf(text));
            m_model->report("tag " + toUtf8(name) + " = " + toUtf8(textOf(text)) + " in " +
                            toUtf8(m_track->path) + (FAILED(result) ? " refused" : " written"));
            if (SUCCEEDED(result))
                m_model->fire([self](IWMPEvents& sink) { sink.MediaChange(self); });
            return result;
        });
    }

protected:
    void* find(REFIID iid) override {
        if (iid == kOwnMedia) return this;
        return match<IUnknown, IDispatch, IWMPMedia, IWMPMedia2, IWMPMedia3>(
            iid, static_cast<IWMPMedia3*>(this));
    }

private:
    const ModelPtr m_model;
    const TrackPtr m_track;
};

}  // namespace

CComPtr<IWMPMedia> makeMedia(const ModelPtr& model, const TrackPtr& track) {
    return makeObject<MediaObject, IWMPMedia>(model, track);
}

TrackPtr trackOf(IUnknown* media) {
    void* own = nullptr;
    if (media == nullptr || FAILED(media->QueryInterface(kOwnMedia, &own))) return nullptr;
    CComPtr<MediaObject> object;
    object.Attach(static_cast<MediaObject*>(own));
    return object->track();
}

}  // namespace orvane::standin
