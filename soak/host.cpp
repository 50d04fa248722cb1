#include "soak/host.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <thread>

#include "standins/player/model.h"
#include "standins/player/objects.h"

namespace orvane::soak {
namespace {

standin::PlayerOptions options() {
    standin::PlayerOptions result;
    result.synthetic = 100;
    return result;
}

std::vector<std::wstring> somePaths() {
    constexpr int kCount = 1000;
    std::vector<std::wstring> paths;
    paths.reserve(kCount);
    for (int i = 0; i < kCount; ++i)
        paths.push_back(L"M:\\Now and then\\" + std::to_wstring(i) + L".wma");
    return paths;
}

}  // namespace

// In a function of its own, as the time ends when `call` is through, whatever it answers.
template <typename Call>
auto Host::timed(const char* name, Call call) {
    struct Watch {
        Longest& longest;
        const char* name;
        const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
        ~Watch() {
            const std::chrono::duration<double, std::milli> took =
                std::chrono::steady_clock::now() - start;
            longest.take(took.count(), name);
        }
    };
    const Watch watch{longest, name};
    return call();
}

Host::Host(unsigned seed) : m_random(seed), m_player(options()) {
    std::string error;
    if (!m_player.openLibrary(error) || !m_player.createWindow())
        throw std::runtime_error("the player does not start");
    m_some = makeItems(somePaths());
    m_player.core()->put_URL(CComBSTR(m_player.itemPath(0).c_str()));
}

Host::~Host() { letGo(); }

void Host::load() {
    timed("LoadLibrary", [&] { m_module.emplace(); });
}

bool Host::free() {
    timed("FreeLibrary", [&] { m_module.reset(); });
    return test::LoadedModule::isGoneSoon();
}

bool Host::create() {
    timed("CreateInstance", [&] { m_plugin = m_module->createPlugin(); });
    if (m_plugin == nullptr) return false;
    m_plugin.QueryInterface(&m_events);
    if (timed("SetCore", [&] { return m_plugin->SetCore(m_player.core()); }) != S_OK)
        throw std::runtime_error("the plug-in refuses the core");
    return true;
}

void Host::letGo() {
    if (m_plugin == nullptr) return;
    timed("SetCore(null)", [&] { return m_plugin->SetCore(nullptr); });
    m_events.Release();
    timed("Release", [&] { m_plugin.Release(); });
}

void Host::useDuring(const std::function<void()>& work) {
    std::atomic<bool> done{false};
    std::exception_ptr thrown;
    std::thread worker([&] {
        try {
            work();
        } catch (...) {
            thrown = std::current_exception();
        }
        done = true;
    });
    while (!done) use();
    worker.join();
    if (thrown) std::rethrow_exception(thrown);
}

void Host::use() {
    const unsigned choice = m_random() % 64;
    if (choice < 24 && m_events != nullptr) {
        constexpr WMPPlayState kStates[] = {wmppsStopped, wmppsPaused, wmppsPlaying,
                                            wmppsTransitioning};
        timed("PlayStateChange", [&] { m_events->PlayStateChange(kStates[choice % 4]); });
    } else if (choice < 32) {
        timed("moving the window", [&] {
            const int at = static_cast<int>(m_random() % 300);
            SetWindowPos(window(), nullptr, at, at, 640 + at, 480, SWP_NOZORDER | SWP_NOACTIVATE);
        });
    } else if (choice < 40) {
        constexpr int kShows[] = {SW_HIDE, SW_SHOWNA, SW_MAXIMIZE, SW_RESTORE, SW_MINIMIZE};
        timed("ShowWindow", [&] { ShowWindow(window(), kShows[m_random() % 5]); });
    } else if (choice < 42 && selects) {
        send(m_some);
    } else if (choice == 42) {
        // The next commands are served on the thread that asks, or on the player's.
        m_player.change([](auto& of) { of.serveOnOwnThread = !of.serveOnOwnThread; });
    }
    pump(m_random() % 6);
}

void Host::pump(DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            timed("a message", [&] { DispatchMessageW(&message); });
        const ULONGLONG now = GetTickCount64();
        if (now >= end) return;
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
    }
}

void Host::send(const std::vector<CComPtr<IUnknown>>& items) {
    if (m_plugin == nullptr) return;
    VARIANT value;
    value.vt = VT_ARRAY | VT_UNKNOWN;
    value.parray = SafeArrayCreateVector(VT_UNKNOWN, 0, static_cast<ULONG>(items.size()));
    if (value.parray == nullptr) throw std::runtime_error("there is not enough memory");
    for (LONG i = 0; i < std::ssize(items); ++i)
        SafeArrayPutElement(value.parray, &i, items[static_cast<std::size_t>(i)]);
    timed("SetProperty", [&] { return m_plugin->SetProperty(PLUGIN_MISC_MEDIASENDTO, &value); });
    VariantClear(&value);
}

std::vector<CComPtr<IUnknown>> Host::makeItems(const std::vector<std::wstring>& paths) {
    std::vector<CComPtr<IUnknown>> items;
    items.reserve(paths.size());
    const auto model = m_player.model().shared_from_this();
    for (const auto& path : paths) {
        const auto track = std::make_shared<standin::Track>();
        track->path = path;
        track->synthetic = true;
        items.emplace_back(standin::makeMedia(model, track));
    }
    return items;
}

}  // namespace orvane::soak
