#include "standins/player/event_sinks.h"

#include <olectl.h>

#include <utility>
#include <vector>

#include "standins/player/model.h"

namespace orvane::standin {

DWORD EventSinks::add(CComPtr<IWMPEvents> sink) {
    const std::lock_guard lock(m_mutex);
    m_sinks.emplace(++m_lastCookie, std::move(sink));
    return m_lastCookie;
}

CComPtr<IWMPEvents> EventSinks::remove(DWORD cookie) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_sinks.find(cookie);
    if (found == m_sinks.end()) return {};
    CComPtr<IWMPEvents> sink = std::move(found->second);
    m_sinks.erase(found);
    return sink;
}

void EventSinks::clear() {
    std::map<DWORD, CComPtr<IWMPEvents>> sinks;
    const std::lock_guard lock(m_mutex);
    sinks.swap(m_sinks);
}

size_t EventSinks::count() const {
    const std::lock_guard lock(m_mutex);
    return m_sinks.size();
}

CComPtr<IWMPEvents> EventSinks::find(DWORD cookie) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_sinks.find(cookie);
    return found == m_sinks.end() ? CComPtr<IWMPEvents>() : found->second;
}

void EventSinks::raise(const std::function<void(IWMPEvents&)>& event) {
    std::vector<DWORD> cookies;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [cookie, sink] : m_sinks) cookies.push_back(cookie);
    }
    for (const DWORD cookie : cookies) {
        if (const CComPtr<IWMPEvents> sink = find(cookie)) event(*sink);
    }
}

namespace {

class ConnectionPointObject final : public ComObject<IConnectionPoint> {
public:
    explicit ConnectionPointObject(std::shared_ptr<Model> model) : m_model(std::move(model)) {}

    STDMETHOD(GetConnectionInterface)(IID*) override { return E_NOTIMPL; }
    STDMETHOD(GetConnectionPointContainer)(IConnectionPointContainer**) override {
        return E_NOTIMPL;
    }
    STDMETHOD(Advise)(IUnknown* object, DWORD* cookie) override {
        if (object == nullptr || cookie == nullptr) return E_POINTER;
        *cookie = 0;
        CComQIPtr<IWMPEvents> sink(object);
        if (!sink) return CONNECT_E_CANNOTCONNECT;
        return m_model->serve("IConnectionPoint::Advise", [&] {
            *cookie = m_model->sinks.add(std::move(sink));
            return S_OK;
        });
    }
    STDMETHOD(Unadvise)(DWORD cookie) override {
        CComPtr<IWMPEvents> sink;
        return m_model->serve("IConnectionPoint::Unadvise", [&]() -> HRESULT {
            sink = m_model->sinks.remove(cookie);
            return sink ? S_OK : CONNECT_E_NOCONNECTION;
        });
    }
    STDMETHOD(EnumConnections)(IEnumConnections**) override { return E_NOTIMPL; }

protected:
    void* find(REFIID iid) override { return match<IUnknown, IConnectionPoint>(iid, this); }

private:
    std::shared_ptr<Model> m_model;
};

}  // namespace

CComPtr<IConnectionPoint> makeConnectionPoint(std::shared_ptr<Model> model) {
    return makeObject<ConnectionPointObject, IConnectionPoint>(std::move(model));
}

}  // namespace orvane::standin
