#include "standins/player/objects.h"

#include <utility>

namespace orvane::standin {

namespace {

class ErrorItemObject final : public DispatchObject<IWMPErrorItem> {
public:
    ErrorItemObject(ModelPtr model, LONG code) : m_model(std::move(model)), m_code(code) {}

    STDMETHOD(get_errorCode)(LONG* out) override {
        return m_model->give("IWMPErrorItem::get_errorCode", out, [&] {
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
        return m_model->give("IWMPError::get_Item", out, [&]() -> HRESULT {
            const auto& errors = m_model->options.errors;
            if (index < 0 || static_cast<size_t>(index) >= errors.size()) return E_INVALIDARG;
            const LONG code = errors[static_cast<size_t>(index)];
            *out = makeObject<ErrorItemObject, IWMPErrorItem>(m_model, code).Detach();
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

CComPtr<IWMPError> makeErrorList(const ModelPtr& model) {
    return makeObject<ErrorListObject, IWMPError>(model);
}

}  // namespace orvane::standin
