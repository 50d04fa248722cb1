#include <utility>

#include "standins/player/controls_object.h"

namespace orvane::standin {

namespace {

class ErrorItemObject final : public DispatchObject<IWMPErrorItem> {
public:
    ErrorItemObject(ModelPtr model, LONG code) : m_model(std::move(model)), m_code(code) {}

    STDMETHOD(get_errorCode)(LONG* out) override {
        if (out == nullptr) return E_POINTER;
        return m_model->serve("IWMPErrorItem::get_errorCode", [&] {
            *out = m_code;
            return S_OK;
        });
    }

    STDMETHOD(get_errorDescription)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(get_errorContext)(VARIANT*) override { return E_NOTIMPL; }
    STDMETHOD(get_remedy)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(get_customUrl)(BSTR*) override { return E_NOTIMPL; }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPErrorItem>(iid, static_cast<IWMPErrorItem*>(this));
    }

private:
    const ModelPtr m_model;
    const LONG m_code;
};

class ErrorListObject final : public DispatchObject<IWMPError> {
public:
    explicit ErrorListObject(ModelPtr model) : m_model(std::move(model)) {}

    STDMETHOD(get_Item)(LONG index, IWMPErrorItem** out) override {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return m_model->serve("IWMPError::get_Item", [&]() -> HRESULT {
            const auto& errors = m_model->options.errors;
            if (index < 0 || static_cast<size_t>(index) >= errors.size()) return E_INVALIDARG;
            *out =
                makeObject<ErrorItemObject>(m_model, errors[static_cast<size_t>(index)]).detach();
            return S_OK;
        });
    }

    STDMETHOD(clearErrorQueue)() override { return E_NOTIMPL; }
    STDMETHOD(get_errorCount)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(webHelp)() override { return E_NOTIMPL; }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IDispatch, IWMPError>(iid, static_cast<IWMPError*>(this));
    }

private:
    const ModelPtr m_model;
};

}  // namespace

ComRef<IWMPError> makeErrorList(ModelPtr model) {
    auto object = makeObject<ErrorListObject>(std::move(model));
    return ComRef<IWMPError>(object.get());
}

}  // namespace orvane::standin
