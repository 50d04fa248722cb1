#include "standins/player/objects.h"

#include <utility>

namespace orvane::standin {

namespace {

class ControlsObject final : public DispatchObject<IWMPControls> {
public:
    explicit ControlsObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(play)() override {
        return m_model->serve("IWMPControls::play", [&] { return m_model->playback.play(); });
    }
    STDMETHOD(stop)() override {
        return m_model->serve("IWMPControls::stop", [&] { return m_model->playback.stop(); });
    }
    STDMETHOD(pause)() override {
        return m_model->serve("IWMPControls::pause", [&] { return m_model->playback.pause(); });
    }

    ORVANE_PROPERTY_NOT_MADE(currentPosition, double)
    STDMETHOD(currentItem)(IWMPMedia**) override { return E_NOTIMPL; }
    STDMETHOD(playItem)(IWMPMedia*) override { return E_NOTIMPL; }
    STDMETHOD(get_isAvailable)(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(fastForward)() override { return E_NOTIMPL; }
    STDMETHOD(fastReverse)() override { return E_NOTIMPL; }
    STDMETHOD(get_currentPositionString)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(next)() override { return E_NOTIMPL; }
    STDMETHOD(previous)() override { return E_NOTIMPL; }
    STDMETHOD(put_currentItem)(IWMPMedia*) override { return E_NOTIMPL; }
    ORVANE_PROPERTY_NOT_MADE(currentMarker, LONG)

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPControls>(iid, static_cast<IWMPControls*>(this));
    }

private:
    const ModelPtr m_model;
};

}  // namespace

CComPtr<IWMPControls> makeControls(const ModelPtr& model) {
    return makeObject<ControlsObject, IWMPControls>(model);
}

}  // namespace orvane::standin
