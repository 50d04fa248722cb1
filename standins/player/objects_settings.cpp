#include "standins/player/objects.h"

#include <utility>

namespace orvane::standin {

namespace {

class SettingsObject final : public DispatchObject<IWMPSettings> {
public:
    explicit SettingsObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(getMode)(BSTR mode, VARIANT_BOOL* out) override {
        return m_model->give("IWMPSettings::getMode", out, [&]() -> HRESULT {
            const auto found = m_model->options.modes.find(textOf(mode));
            if (found == m_model->options.modes.end()) return E_INVALIDARG;
            *out = found->second ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        });
    }
    STDMETHOD(setMode)(BSTR mode, VARIANT_BOOL value) override {
        return m_model->serve("IWMPSettings::setMode", [&]() -> HRESULT {
            const std::wstring name = textOf(mode);
            const auto found = m_model->options.modes.find(name);
            if (found == m_model->options.modes.end()) return E_INVALIDARG;
            found->second = value != VARIANT_FALSE;
            m_model->fire([name, value](IWMPEvents& sink) {
                sink.ModeChange(CComBSTR(name.c_str()), value);
            });
            return S_OK;
        });
    }

    ORVANE_PROPERTY_NOT_MADE(autoStart, VARIANT_BOOL)
    STDMETHOD(get_isAvailable)(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    ORVANE_PROPERTY_NOT_MADE(baseURL, BSTR)
    ORVANE_PROPERTY_NOT_MADE(defaultFrame, BSTR)
    ORVANE_PROPERTY_NOT_MADE(invokeURLs, VARIANT_BOOL)
    ORVANE_PROPERTY_NOT_MADE(mute, VARIANT_BOOL)
    ORVANE_PROPERTY_NOT_MADE(playCount, LONG)
    ORVANE_PROPERTY_NOT_MADE(rate, double)
    ORVANE_PROPERTY_NOT_MADE(balance, LONG)
    ORVANE_PROPERTY_NOT_MADE(volume, LONG)
    ORVANE_PROPERTY_NOT_MADE(enableErrorDialogs, VARIANT_BOOL)

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPSettings>(iid, static_cast<IWMPSettings*>(this));
    }

private:
    const ModelPtr m_model;
};

}  // namespace

CComPtr<IWMPSettings> makeSettings(const ModelPtr& model) {
    return makeObject<SettingsObject, IWMPSettings>(model);
}

}  // namespace orvane::standin
