#include "plugin/wmp_plugin.h"

#include <cwchar>
#include <new>
#include <utility>

#include "common/launcher/orvane_launcher.h"
#include "common/messages/player_name.h"
#include "common/names/class_id.h"
#include "media/file_rewrite.h"
#include "platform/host_call.h"
#include "platform/module.h"
#include "platform/process_end.h"
#include "platform/waiting.h"
#include "plugin/registration.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane {

const CLSID CLSID_OrVaneWmpPlugin = names::kClass;

namespace {

constexpr int kPlayerId = 3;
constexpr int kWrittenPriorities = 63;  // LOG_EMERG to LOG_NOTICE
constexpr UINT kReconnectPeriodMs = 2000;
constexpr DWORD kRewriteTimeMs = 60'000;
constexpr UINT kBusyTextId = 104;  // plugin/resources.rc.in

template <typename T, typename... Arguments>
std::unique_ptr<T> makeOrNull(Arguments&&... arguments) {
    try {
        return std::make_unique<T>(std::forward<Arguments>(arguments)...);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

COrVaneWmpPlugin::~COrVaneWmpPlugin() {
    if (m_window != nullptr) m_window->close();  // its tasks use this object
}

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

HRESULT COrVaneWmpPlugin::link() {
    constexpr const char* self = "COrVaneWmpPlugin::FinalConstruct";

    const auto launcher = makeOrNull<OrvaneLauncher>(kPlayerId);
    if (launcher == nullptr) {
        syslog(LOG_ERR, "%s: can't create iOrVane application launcher", self);
        return E_FAIL;
    }
    m_window = MessageWindow::create();
    if (m_window == nullptr || !m_commandsEnded) {
        syslog(LOG_ERR, "COrVaneWmpPlugin: can't create the message window -- %M");
        return E_FAIL;
    }
    m_methods = std::shared_ptr<IOrvanePluginMethods>(this, [](IOrvanePluginMethods* object) {
        static_cast<COrVaneWmpPlugin*>(object)->commandsHaveEnded();
    });
    {
        // Called on any thread, and when it comes late the window takes no task any more.
        auto whenLost = [this, window = m_window] {
            window->post([this] { startReconnecting(); });
        };
        m_connector = launcher->createConnector(m_methods, std::move(whenLost));
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
        if (processIsEnding) return 1;
        // A command's step that is on this stack has to end before the object can.
        if ((m_window != nullptr && !m_window->isOwnThread()) || m_steps > 0) {
            releaseOnOwnThread();
            return 1;
        }
        if (!m_released) end();
        // A reference too many, given back by a call that end() has let in.
        if (!m_ended) return 1;
    }
    return Root::InternalRelease();
}

// A window that takes no message leaves the object alone for good: better some memory than an
// object that ends where it may not.
void COrVaneWmpPlugin::releaseOnOwnThread() noexcept {
    try {
        m_window->post([this] { Release(); });
    } catch (...) {
    }
}

void COrVaneWmpPlugin::commandsHaveEnded() noexcept {
    // Without a reference the object may be gone as soon as the event is signalled.
    const bool kept = m_keptByCommand;
    SetEvent(m_commandsEnded.get());
    if (kept) static_cast<IWMPEvents*>(this)->Release();
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
        endCommands();
    } catch (...) {
        // Nothing above is expected to throw, and the player must not see it if it does.
    }
    m_ended = true;
}

void COrVaneWmpPlugin::unlink() {
    std::unique_ptr<WmpWindowHook> windowHook;
    {
        const juce::ScopedLock lock(m_lock);
        windowHook = std::move(m_windowHook);
    }
    windowHook.reset();
    m_listWindowHook.reset();
    // A file that is being rewritten is finished first, while the link can still be answered.
    if (const UniqueHandle rewritten = FileRewrite::ended())
        static_cast<void>(waitServingCalls(rewritten.get(), kRewriteTimeMs));
    // Waits for the command that runs. Events that come in meanwhile find no connector.
    const auto connector = std::move(m_connector);
}

// The link is down, so no command begins any more, but one may still run. It gets a reference to
// the object, which goes at once when there is none.
void COrVaneWmpPlugin::endCommands() {
    if (m_methods == nullptr) return;
    m_keptByCommand = m_dwRef >= 1;
    if (m_keptByCommand) AddRef();
    m_methods.reset();
    if (!m_keptByCommand) {
        // A failed creation and an aggregated object have nobody to keep them.
        static_cast<void>(waitServingCalls(m_commandsEnded.get(), INFINITE));
    } else if (WaitForSingleObject(m_commandsEnded.get(), 0) != WAIT_OBJECT_0) {
        pinThisModule();  // the object's end comes from a message, when nobody holds the module
    }
}

bool COrVaneWmpPlugin::onPlayer(const std::function<bool(IWMPCore&)>& use) {
    bool result = false;
    const bool ran = m_window->run([&] {
        // A reference of its own, as the call may bring SetCore.
        const CComPtr<IWMPCore> core = m_core;
        if (core == nullptr) return;
        const juce::ScopedValueSetter<int> step(m_steps, m_steps + 1);
        result = use(*core);
    });
    return ran && result;
}

void COrVaneWmpPlugin::onOwnThread(std::function<void()> work) {
    if (m_window == nullptr || m_window->isOwnThread())
        work();
    else
        m_window->post(std::move(work));
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
    m_core = core;

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
    std::swap(m_core.p, core.p);
    if (point != nullptr && cookie != 0) point->Unadvise(cookie);
    point.Release();
    if (core == nullptr) return;
    core.Release();
    if (m_connector != nullptr) m_connector->playerGoodbye(playerName());
    syslog(LOG_INFO, "COrVaneWmpPlugin: plugin unloaded");
}

STDMETHODIMP COrVaneWmpPlugin::Create(HWND, HWND*) { return E_NOTIMPL; }

STDMETHODIMP COrVaneWmpPlugin::Destroy() { return S_OK; }

STDMETHODIMP COrVaneWmpPlugin::DisplayPropertyPage(HWND) { return E_NOTIMPL; }

STDMETHODIMP COrVaneWmpPlugin::GetProperty(const WCHAR* name, VARIANT* value) {
    if (value == nullptr) return E_POINTER;
    if (name == nullptr || std::wcscmp(name, PLUGIN_MISC_QUERYDESTROY) != 0) return E_NOTIMPL;
    if (!FileRewrite::inProgress()) return E_NOTIMPL;
    // In the module's read-only memory: with a size of 0 it is the address that is given.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(thisModule(), kBusyTextId, reinterpret_cast<wchar_t*>(&text), 0);
    BSTR const copy = SysAllocStringLen(text, static_cast<UINT>(length));
    if (copy == nullptr) return E_OUTOFMEMORY;
    value->vt = VT_BSTR;
    value->bstrVal = copy;
    return S_OK;
}

STDMETHODIMP COrVaneWmpPlugin::TranslateAccelerator(MSG*) { return E_NOTIMPL; }

// Each attempt starts the timer anew, so that two never follow each other without a period between.
void COrVaneWmpPlugin::startReconnecting() {
    if (m_released || m_reconnectTimer.isRunning()) return;
    if (!m_reconnectTimer.start(kReconnectPeriodMs))
        syslog(LOG_ERR, "COrVaneWmpPlugin: can't start the reconnect timer -- %M");
}

void COrVaneWmpPlugin::timerCallback() {
    m_reconnectTimer.stop();
    AppConnector* const link = m_connector.get();
    if (link == nullptr || link->isConnected()) return;
    if (!link->connect()) {
        startReconnecting();
        return;
    }
    syslog(LOG_DEBUG, "%s: reconnected to OV.", "COrVaneWmpPlugin::timerCallback");
    link->playerHello(playerName());
}

bool COrVaneWmpPlugin::disconnectFromApp() {
    if (m_connector != nullptr) m_connector->disconnect();
    return true;
}

}  // namespace orvane
