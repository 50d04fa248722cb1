#include "standins/player/model.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvane::standin {

HRESULT Model::serve(const char* call, const std::function<HRESULT()>& body) noexcept {
    try {
        return invoke(call, body);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT Model::invoke(const char* call, const std::function<HRESULT()>& body) {
    bool handOver = false;
    std::function<long(const std::string&)> ask;
    {
        const std::lock_guard lock(m_mutex);
        const auto count = m_calls.find(std::string_view(call));
        if (count == m_calls.end())
            m_calls.emplace(call, 1);
        else
            ++count->second;
        if (!apartment.isOwnThread()) {
            ++usesOnOtherThreads();
            if (options.refuseOtherThreads) return RPC_E_WRONG_THREAD;
        }
        handOver = options.serveOnOwnThread;
        ask = options.onCall;
    }
    const auto served = [&]() -> HRESULT {
        try {
            if (const HRESULT answer = ask ? ask(call) : S_OK; answer != S_OK) return answer;
            const std::lock_guard lock(m_mutex);
            if (m_closed) return RPC_E_DISCONNECTED;
            if (options.failCalls.contains(call)) return E_FAIL;
            return body();
        } catch (...) {
            return E_OUTOFMEMORY;  // not through the window procedure that may be serving this
        }
    };
    return handOver ? apartment.run(served) : served();
}

void Model::fire(std::function<void(IWMPEvents&)> event) {
    apartment.post([this, event = std::move(event)] { sinks.raise(event); });
}

void Model::saveTags(const TrackPtr& track) {
    constexpr unsigned kRetryMs = 200;
    const unsigned after = options.tagsAfterMs;
    if (after == PlayerOptions::kNever || track->saveIsDue) return;
    if (after == 0 && tags.save(*track)) return;
    track->saveIsDue = true;
    later(std::max(after, kRetryMs), [this, track] {
        track->saveIsDue = false;
        if (!tags.save(*track)) saveTags(track);
    });
}

void Model::later(unsigned milliseconds, std::function<void()> work) {
    apartment.postLater(milliseconds, [this, work = std::move(work)] {
        const std::lock_guard lock(m_mutex);
        work();
    });
}

unsigned long Model::callCount(const std::string& call) const {
    const std::lock_guard lock(m_mutex);
    if (!call.empty()) {
        const auto found = m_calls.find(call);
        return found == m_calls.end() ? 0 : found->second;
    }
    unsigned long total = 0;
    for (const auto& [name, count] : m_calls) total += count;
    return total;
}

void Model::close() {
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        playback.letFileGo();
    }
    apartment.close();
    sinks.clear();
}

}  // namespace orvane::standin
