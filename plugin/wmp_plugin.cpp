#include "plugin/wmp_plugin.h"

#include <cstdint>
#include <new>
#include <optional>
#include <utility>

#include "common/launcher/orvane_launcher.h"
#include "common/messages/player_name.h"
#include "common/names/class_id.h"
#include "platform/host_call.h"
#include "platform/module.h"
#include "plugin/poll_until.h"
#include "plugin/registration.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane {

const CLSID CLSID_OrVaneWmpPlugin = names::kClass;

namespace {

constexpr int kPlayerId = 3;
constexpr int kWrittenPriorities = 63;  // LOG_EMERG to LOG_NOTICE
constexpr UINT kReconnectPeriodMs = 2000;

template <typename T, typename... Arguments>
std::unique_ptr<T> makeOrNull(Arguments&&... arguments) {
    try {
        return std::make_unique<T>(std::forward<Arguments>(arguments)...);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

COrVaneWmpPlugin::~COrVaneWmpPlugin() = default;

HRESULT WINAPI COrVaneWmpPlugin::UpdateRegistry(BOOL registering) {
    try {
        return registering != FALSE ? registerPlugin() : unregisterPlugin();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT COrVaneWmpPlugin::FinalConstruct() {
    HRESULT result = E_FAIL;
    try {
        openlog("OrVaneWmpPlugin", LOG_PID, 0);
        setlogmask(kWrittenPriorities);
        result = link();
    } catch (...) {
        result = E_FAIL;
    }
    if (FAILED(result)) closelog();
    return result;
}

// Up to the running timer, or as far as it goes.
HRESULT COrVaneWmpPlugin::link() {
    constexpr const char* self = "COrVaneWmpPlugin::FinalConstruct";

    const auto launcher = makeOrNull<OrvaneLauncher>(kPlayerId);
    if (launcher == nullptr) {
        syslog(LOG_ERR, "%s: can't create iOrVane application launcher", self);
        return E_FAIL;
    }
    {
        auto connector = launcher->createConnector(this, [this] { return keepForCommand(); });
        const juce::ScopedLock lock(m_lock);
        m_connector = std::move(connector);
    }
    if (m_connector == nullptr) {
        syslog(LOG_NOTICE, "%s: cannot connect to app", self);
        return E_FAIL;
    }
    if (!launcher->isAppRunning() && !launcher->launch()) {
        syslog(LOG_WARNING, "%s: Error launching OrVane", self);
        return E_FAIL;
    }
    if (!m_connector->connect()) {
        syslog(LOG_NOTICE, "COrVaneWmpPlugin: can't connect to the application");
        return E_FAIL;
    }

    auto hook = makeOrNull<WmpWindowHook>(m_connector.get());
    if (hook == nullptr) {
        syslog(LOG_ERR, "COrVaneWmpPlugin: can't instantiate WmpWindowHook");
        return E_FAIL;
    }
    if (!hook->InstallHook()) {
        syslog(LOG_ERR, "COrVaneWmpPlugin: can't install WMP window hook");
        return E_FAIL;
    }
    {
        // Commands may be running since the link is up.
        const juce::ScopedLock lock(m_lock);
        m_windowHook = std::move(hook);
    }
    // Without it the link that is up now is the last one; that is no reason to have none.
    if (!m_reconnectTimer.start(kReconnectPeriodMs))
        syslog(LOG_ERR, "COrVaneWmpPlugin: can't start the reconnect timer -- %M");
    return S_OK;
}

ULONG COrVaneWmpPlugin::InternalRelease() noexcept {
    LONG count = InterlockedCompareExchange(&m_dwRef, 0, 0);
    while (count > 1) {
        const LONG found = InterlockedCompareExchange(&m_dwRef, count - 1, count);
        if (found == count) return static_cast<ULONG>(count - 1);
        count = found;
    }
    if (count == 1) {
        if (!JuceSession::isMessageThread()) {
            releaseOnOwnThread();
            return 1;
        }
        if (!m_released) end();
        // A reference too many, given back by a call that end() has let in.
        if (!m_ended) return 1;
    }
    return Root::InternalRelease();
}

void COrVaneWmpPlugin::releaseOnOwnThread() noexcept {
    try {
        juce::MessageManager::callAsync([this] {
            const JuceSession::CallbackScope scope;
            Release();
        });
    } catch (...) {
        // Never let go: better some memory than an object that ends where it may not.
    }
}

std::shared_ptr<void> COrVaneWmpPlugin::keepForCommand() noexcept {
    if (m_dwRef < 1) return nullptr;
    pinThisModule();
    try {
        AddRef();
        return std::shared_ptr<IWMPEvents>(this, [](IWMPEvents* self) { self->Release(); });
    } catch (...) {
        return nullptr;  // the reference has been given back
    }
}

void COrVaneWmpPlugin::FinalRelease() {
    if (!m_ended) end();
    HostCall::pinModuleIfAny();
}

void COrVaneWmpPlugin::end() noexcept {
    m_released = true;
    try {
        m_reconnectTimer.stop();
        unload();
        unlink();
    } catch (...) {
        // Nothing above is expected to throw, and the player must not see it if it does.
    }
    m_ended = true;
}

void COrVaneWmpPlugin::unlink() {
    std::unique_ptr<WmpWindowHook> windowHook;
    std::unique_ptr<AppConnector> connector;
    {
        const juce::ScopedLock lock(m_lock);
        windowHook = std::move(m_windowHook);
    }
    windowHook.reset();
    m_listWindowHook.reset();
    {
        const juce::ScopedLock lock(m_lock);
        connector = std::move(m_connector);
    }
    // Waits for the command that is running. Events that come in meanwhile find no connector.
    connector.reset();
}

AppConnector* COrVaneWmpPlugin::connector() const {
    const juce::ScopedLock lock(m_lock);
    return m_connector.get();
}

STDMETHODIMP COrVaneWmpPlugin::SetCore(IWMPCore* core) {
    const HostCall inProgress;
    try {
        // Calls into the player and the link below may let the player release us meanwhile.
        const CComPtr<IUnknown> alive(GetUnknown());
        const unsigned call = ++m_setCoreCalls;
        unload();
        if (core == nullptr) return S_OK;
        if (m_released) return E_UNEXPECTED;
        // A SetCore that came in meanwhile is the player's later word.
        if (call != m_setCoreCalls) return S_OK;
        return attach(core);
    } catch (...) {
        return E_FAIL;
    }
}

HRESULT COrVaneWmpPlugin::attach(IWMPCore* core) {
    const unsigned call = m_setCoreCalls;
    {
        CComPtr<IWMPCore> taken(core);
        const juce::ScopedLock lock(m_lock);
        std::swap(m_core.p, taken.p);
    }

    CComPtr<IConnectionPointContainer> container;
    CComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    HRESULT result = core->QueryInterface(__uuidof(IConnectionPointContainer),
                                          reinterpret_cast<void**>(&container));
    if (SUCCEEDED(result)) result = container->FindConnectionPoint(__uuidof(IWMPEvents), &point);
    if (SUCCEEDED(result)) result = point ? point->Advise(GetUnknown(), &cookie) : E_POINTER;

    // Each of these calls may have brought another SetCore, which has dealt with the core, also
    // when it came with the same one.
    const bool current = call == m_setCoreCalls;
    if (SUCCEEDED(result) && cookie != 0) {
        if (!current) {
            point->Unadvise(cookie);
        } else {
            m_connectionPoint = point;
            m_adviseCookie = cookie;
        }
    }
    syslog(LOG_INFO, SUCCEEDED(result) ? "COrVaneWmpPlugin: plugin loaded successfully"
                                       : "COrVaneWmpPlugin: plugin initialization failed");
    if (current && m_connector != nullptr) m_connector->playerHello(playerName());
    return result;
}

// All fields are emptied before the first call into the player: that may bring another SetCore,
// whose core and subscription are not ours to end.
void COrVaneWmpPlugin::unload() {
    CComPtr<IConnectionPoint> point;
    point.Attach(m_connectionPoint.Detach());
    const DWORD cookie = std::exchange(m_adviseCookie, 0);
    CComPtr<IWMPCore> core;
    {
        const juce::ScopedLock lock(m_lock);
        std::swap(m_core.p, core.p);
    }
    if (point != nullptr && cookie != 0) point->Unadvise(cookie);
    point.Release();
    if (core == nullptr) return;
    core.Release();
    if (m_connector != nullptr) m_connector->playerGoodbye(playerName());
    syslog(LOG_INFO, "COrVaneWmpPlugin: plugin unloaded");
}

CComPtr<IWMPCore> COrVaneWmpPlugin::core() const {
    const juce::ScopedLock lock(m_lock);
    return m_core;
}

STDMETHODIMP COrVaneWmpPlugin::Create(HWND, HWND*) { return E_NOTIMPL; }

STDMETHODIMP COrVaneWmpPlugin::Destroy() { return S_OK; }

STDMETHODIMP COrVaneWmpPlugin::DisplayPropertyPage(HWND) { return E_NOTIMPL; }

STDMETHODIMP COrVaneWmpPlugin::GetProperty(const WCHAR*, VARIANT* value) {
    return value == nullptr ? E_POINTER : E_NOTIMPL;
}

STDMETHODIMP COrVaneWmpPlugin::TranslateAccelerator(MSG*) { return E_NOTIMPL; }

void COrVaneWmpPlugin::timerCallback() {
    // Connecting replaces dead pipes and waits for their threads; the player may release us while
    // its calls are served.
    try {
        const CComPtr<IUnknown> alive(GetUnknown());
        AppConnector* const link = connector();
        if (link == nullptr || link->isConnected() || !link->connect()) return;
        syslog(LOG_DEBUG, "%s: reconnected to OV.", "COrVaneWmpPlugin::timerCallback");
        link->playerHello(playerName());
    } catch (...) {
        // Tried again with the next tick.
    }
}

bool COrVaneWmpPlugin::disconnectFromApp() {
    if (AppConnector* const link = connector()) link->disconnect();
    return true;
}

bool COrVaneWmpPlugin::waitForPlayState(IWMPCore& core, WMPPlayState wanted, DWORD timeoutMs) {
    std::optional<int> quit;
    const bool reached = pollUntil(
        timeoutMs, [] { return static_cast<std::uint32_t>(GetTickCount()); },
        [&] {
            WMPPlayState state = wmppsUndefined;
            return SUCCEEDED(core.get_playState(&state)) && state == wanted;
        },
        [&] {
            MSG message;
            if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                if (message.message == WM_QUIT) {
                    quit = static_cast<int>(message.wParam);
                } else {
                    TranslateMessage(&message);
                    DispatchMessageW(&message);
                }
            }
            SwitchToThread();  // to the player's own thread, if it has something to do
        });
    // It is for the message loop that this call came from.
    if (quit) PostQuitMessage(*quit);
    return reached;
}

}  // namespace orvane
