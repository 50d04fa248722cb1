#include "standins/player/objects.h"

#include <utility>

#include "standins/player/media_base.h"

namespace orvane::standin {

namespace {

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
            if (m_model->options.failReads.contains(textOf(attribute))) return E_FAIL;
            const auto values = valuesOf(attribute);
            return giveText(values.empty() ? std::wstring() : values.front(), out);
        });
    }
    STDMETHOD(isReadOnlyItem)(BSTR attribute, VARIANT_BOOL* out) override {
        return m_model->give("IWMPMedia::isReadOnlyItem", out, [&] {
            *out = TagStore::isReadOnly(textOf(attribute)) ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        });
    }
    STDMETHOD(getAttributeCountByType)(BSTR attribute, BSTR, LONG* out) override {
        return m_model->give("IWMPMedia3::getAttributeCountByType", out, [&] {
            *out = static_cast<LONG>(valuesOf(attribute).size());
            return S_OK;
        });
    }
    STDMETHOD(getItemInfoByType)(BSTR attribute, BSTR, LONG index, VARIANT* out) override {
        return m_model->give("IWMPMedia3::getItemInfoByType", out, [&]() -> HRESULT {
            const auto values = valuesOf(attribute);
            if (index < 0 || index >= std::ssize(values)) return E_INVALIDARG;
            out->vt = VT_BSTR;
            return giveText(values[static_cast<size_t>(index)], &out->bstrVal);
        });
    }
    STDMETHOD(setItemInfo)(BSTR attribute, BSTR text) override {
        const CComPtr<IWMPMedia3> self(this);
        return m_model->serve("IWMPMedia::setItemInfo", [&]() -> HRESULT {
            const std::wstring name = textOf(attribute);
            const HRESULT result = m_model->tags.write(*m_track, name, textOf(text));
            if (result == S_FALSE)
                m_own[name] = textOf(text);
            else
                m_model->saveTags(m_track);
            m_model->report("tag " + toUtf8(name) + " = " + toUtf8(textOf(text)) + " in " +
                            toUtf8(m_track->path) + (FAILED(result) ? " refused" : " written"));
            if (SUCCEEDED(result))
                m_model->fire([self](IWMPEvents& sink) { sink.MediaChange(self); });
            return FAILED(result) ? result : S_OK;
        });
    }

protected:
    void* find(REFIID iid) override {
        if (iid == kOwnMedia) return this;
        return match<IUnknown, IDispatch, IWMPMedia, IWMPMedia2, IWMPMedia3>(
            iid, static_cast<IWMPMedia3*>(this));
    }

private:
    [[nodiscard]] std::vector<std::wstring> valuesOf(BSTR attribute) const {
        const auto own = m_own.find(textOf(attribute));
        if (own != m_own.end()) return {own->second};
        return m_model->tags.read(*m_track, textOf(attribute));
    }

    const ModelPtr m_model;
    const TrackPtr m_track;
    std::map<std::wstring, std::wstring> m_own;  // what neither library nor file keeps
};

}  // namespace

CComPtr<IWMPMedia> makeMedia(const ModelPtr& model, const TrackPtr& track) {
    return makeObject<MediaObject, IWMPMedia>(model, track);
}

TrackPtr trackOf(IUnknown* media) {
    const auto own = ownObject<MediaObject>(media, kOwnMedia);
    return own ? own->track() : nullptr;
}

}  // namespace orvane::standin
