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

    STDMETHOD(get_autoStart)(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(put_autoStart)(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHOD(get_isAvailable)(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(get_baseURL)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(put_baseURL)(BSTR) override { return E_NOTIMPL; }
    STDMETHOD(get_defaultFrame)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(put_defaultFrame)(BSTR) override { return E_NOTIMPL; }
    STDMETHOD(get_invokeURLs)(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(put_invokeURLs)(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHOD(get_mute)(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(put_mute)(VARIANT_BOOL) override { return E_NOTIMPL; }
    STDMETHOD(get_playCount)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(put_playCount)(LONG) override { return E_NOTIMPL; }
    STDMETHOD(get_rate)(double*) override { return E_NOTIMPL; }
    STDMETHOD(put_rate)(double) override { return E_NOTIMPL; }
    STDMETHOD(get_balance)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(put_balance)(LONG) override { return E_NOTIMPL; }
    STDMETHOD(get_volume)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(put_volume)(LONG) override { return E_NOTIMPL; }
    STDMETHOD(get_enableErrorDialogs)(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(put_enableErrorDialogs)(VARIANT_BOOL) override { return E_NOTIMPL; }

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
