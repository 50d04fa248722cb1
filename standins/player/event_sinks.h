#pragma once

// Who listens to the player's events: the connection point and the sinks advised on it.

#include <ocidl.h>
#include <wmp.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "standins/player/com_support.h"

namespace orvane::standin {

class Model;

class EventSinks {
public:
    // 0 is no cookie.
    DWORD add(CComPtr<IWMPEvents> sink);
    // Hands the sink to the caller, who lets it go with no lock held: its last release may call
    // the player. Empty for an unknown cookie.
    CComPtr<IWMPEvents> remove(DWORD cookie);
    void clear();
    [[nodiscard]] size_t count() const;

    // Calls every sink that is still advised when its turn comes. On the player's own thread only,
    // with no lock held: a sink may call the player, advise and unadvise.
    void raise(const std::function<void(IWMPEvents&)>& event);

private:
    [[nodiscard]] CComPtr<IWMPEvents> find(DWORD cookie) const;

    mutable std::mutex m_mutex;
    std::map<DWORD, CComPtr<IWMPEvents>> m_sinks;
    DWORD m_lastCookie = 0;
};

// IConnectionPoint for IWMPEvents.
CComPtr<IConnectionPoint> makeConnectionPoint(std::shared_ptr<Model> model);

}  // namespace orvane::standin
