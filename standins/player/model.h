#pragma once

// What all objects of one stand-in player share, and the way a call into any of them is served.

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "standins/player/apartment.h"
#include "standins/player/event_sinks.h"
#include "standins/player/media_library.h"
#include "standins/player/playback.h"
#include "standins/player/player_options.h"
#include "standins/player/track.h"

namespace orvane::standin {

class Model : public std::enable_shared_from_this<Model> {
public:
    explicit Model(PlayerOptions playerOptions)
        : options(std::move(playerOptions)), tags(options), playback(*this) {}
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    // Serves one call of a COM method, named "IWMPCore::get_controls", from any thread: counted,
    // told to a test that listens, failed when the options say so, and run under the lock, on the
    // player's own thread when the options ask for that. RPC_E_DISCONNECTED after close().
    HRESULT serve(const char* call, const std::function<HRESULT()>& body) noexcept;

    // The same for one that gives something: E_POINTER without a place for it.
    template <typename Out>
    HRESULT give(const char* call, Out* out, const std::function<HRESULT()>& body) noexcept {
        if (out == nullptr) return E_POINTER;
        *out = Out{};
        return serve(call, body);
    }

    // Queues an event for all sinks, in order, to be raised on the player's thread; any thread.
    void fire(std::function<void(IWMPEvents&)> event);

    // Has the tags that were set reach the track's file, when the options say; tried again for as
    // long as somebody has the file. Under the lock.
    void saveTags(const TrackPtr& track);

    // Runs work under the lock on the player's thread, that much later.
    void later(unsigned milliseconds, std::function<void()> work);

    // Under the lock, on the calling thread: for the program and for tests.
    template <typename Work>
    auto locked(Work work) const {
        const std::lock_guard lock(m_mutex);
        return work();
    }

    [[nodiscard]] unsigned long callCount(const std::string& call) const;

    // Own thread; drops the sinks and all that is queued.
    void close();

    // One line for each thing done to the player; called on any thread, under the lock.
    std::function<void(const std::string&)> report = [](const std::string&) {};

    Apartment apartment;
    EventSinks sinks;

    // Guarded by the lock: touched only in serve(), later() and locked().
    PlayerOptions options;
    Library library;
    TagStore tags;
    Playback playback;

private:
    HRESULT invoke(const char* call, const std::function<HRESULT()>& body);

    mutable std::mutex m_mutex;
    std::map<std::string, unsigned long, std::less<>> m_calls;
    bool m_closed = false;
};

using ModelPtr = std::shared_ptr<Model>;

}  // namespace orvane::standin
