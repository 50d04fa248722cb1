// The player's side of its plug-ins, and the script that drives it.

#include <map>

#include "standins/player/main_window.h"
#include "standins/player/plugin_host.h"
#include "standins/player/script.h"
#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

const CLSID kFakePlugin = {
    0x5be6a3f0, 0x0b57, 0x4a0c, {0x8d, 0x1b, 0x60, 0x2a, 0xd4, 0x9f, 0x11, 0x77}};

struct Notes {
    std::vector<std::string> lines;
    int alive = 0;
};

// Notes what the player does to it. Reads arrays as a plug-in would.
class FakePlugin final : public ComObject<IWMPPluginUI> {
public:
    explicit FakePlugin(Notes& notes) : m_notes(notes) { ++m_notes.alive; }
    ~FakePlugin() override { --m_notes.alive; }

    STDMETHOD(SetCore)(IWMPCore* core) override {
        m_notes.lines.push_back(core != nullptr ? "core" : "no core");
        return S_OK;
    }
    STDMETHOD(Create)(HWND, HWND*) override {
        m_notes.lines.push_back("Create");
        return E_NOTIMPL;
    }
    STDMETHOD(Destroy)() override { return S_OK; }
    STDMETHOD(DisplayPropertyPage)(HWND) override { return E_NOTIMPL; }
    STDMETHOD(GetProperty)(const WCHAR*, VARIANT*) override { return E_NOTIMPL; }
    STDMETHOD(TranslateAccelerator)(MSG*) override { return E_NOTIMPL; }
    STDMETHOD(SetProperty)(const WCHAR* name, const VARIANT* value) override {
        std::string line = toUtf8(name);
        if (value->vt == (VT_ARRAY | VT_UNKNOWN) && value->parray != nullptr)
            line += ":" + elementsOf(value->parray);
        m_notes.lines.push_back(line);
        return S_OK;
    }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IWMPPluginUI>(iid, static_cast<IWMPPluginUI*>(this));
    }

private:
    static std::string elementsOf(SAFEARRAY* array) {
        std::string result;
        LONG last = -1;
        SafeArrayGetUBound(array, 1, &last);
        for (LONG i = 0; i <= last; ++i) {
            ComRef<IUnknown> element;
            if (FAILED(SafeArrayGetElement(array, &i, element.put()))) {
                result += " none";
            } else if (const auto media = element.query<IWMPMedia>()) {
                BSTR path = nullptr;
                media->get_sourceURL(&path);
                result += " " + toUtf8(textOf(path));
                SysFreeString(path);
            } else if (const auto list = element.query<IWMPPlaylist>()) {
                LONG count = -1;
                list->get_count(&count);
                result += " list of " + std::to_string(count);
            } else {
                result += element ? " other" : " null";
            }
        }
        return result;
    }

    Notes& m_notes;
};

class FakeFactory final : public ComObject<IClassFactory> {
public:
    explicit FakeFactory(Notes& notes) : m_notes(notes) {}
    STDMETHOD(CreateInstance)(IUnknown*, REFIID iid, void** out) override {
        return makeObject<FakePlugin>(m_notes)->QueryInterface(iid, out);
    }
    STDMETHOD(LockServer)(BOOL) override { return S_OK; }

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IClassFactory>(iid, static_cast<IClassFactory*>(this));
    }

private:
    Notes& m_notes;
};

// While it lives, this process sees an empty key of its own as HKEY_LOCAL_MACHINE, so that the
// plug-ins that are installed on the machine are none of the test's business.
class OwnLocalMachine {
public:
    OwnLocalMachine() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kName);
        RegCreateKeyW(HKEY_CURRENT_USER, kName, &m_key);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_key);
    }
    ~OwnLocalMachine() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(m_key);
        RegDeleteTreeW(HKEY_CURRENT_USER, kName);
    }
    OwnLocalMachine(const OwnLocalMachine&) = delete;
    OwnLocalMachine& operator=(const OwnLocalMachine&) = delete;

    static void registerPlugin(const std::wstring& name, DWORD capabilities) {
        HKEY key = nullptr;
        RegCreateKeyW(HKEY_LOCAL_MACHINE, (PLUGIN_INSTALLREGKEY + (L"\\" + name)).c_str(), &key);
        RegSetValueExW(key, PLUGIN_INSTALLREGKEY_CAPABILITIES, 0, REG_DWORD,
                       reinterpret_cast<const BYTE*>(&capabilities), sizeof(capabilities));
        RegCloseKey(key);
    }
    static void unregisterPlugin(const std::wstring& name) {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, (PLUGIN_INSTALLREGKEY + (L"\\" + name)).c_str());
    }

private:
    static constexpr const wchar_t* kName = L"Software\\OrVaneStandinPlayerTests";
    HKEY m_key = nullptr;
};

class PluginsTest : public PlayerTest {
protected:
    Player& startWithWindow(unsigned items = 3) {
        PlayerOptions options;
        options.synthetic = items;
        Player& player = start(options);
        EXPECT_TRUE(player.createWindow());
        player.plugins().report = [&](const std::string& line) { m_reports.push_back(line); };
        return player;
    }
    void runScript(std::initializer_list<const char*> lines, unsigned limit = 5000) {
        Script script(*m_player, [&](const std::string& line) { m_reports.push_back(line); });
        bool ended = false;
        script.onEnd = [&] { ended = true; };
        for (const char* line : lines) script.feed(line);
        script.end();
        EXPECT_TRUE(m_player->pumpUntil([&] { return ended; }, limit));
        m_failures = script.failures();
    }
    [[nodiscard]] bool reported(const std::string& part) const {
        for (const std::string& line : m_reports) {
            if (line.find(part) != std::string::npos) return true;
        }
        return false;
    }
    void TearDown() override {
        m_player.reset();
        EXPECT_EQ(m_notes.alive, 0);
        PlayerTest::TearDown();
    }

    Notes m_notes;
    std::vector<std::string> m_reports;
    unsigned m_failures = 0;
};

TEST_F(PluginsTest, RegisteredBackgroundPluginsAreFoundAndOnesThatFailAreLeftOut) {
    const OwnLocalMachine machine;
    const std::wstring name = L"{5BE6A3F0-0B57-4A0C-8D1B-602AD49F1177}";
    machine.registerPlugin(name, 0x58000001);
    machine.registerPlugin(L"{5BE6A3F0-0B57-4A0C-8D1B-602AD49F1178}", 0x58000001);  // no server
    machine.registerPlugin(L"{5BE6A3F0-0B57-4A0C-8D1B-602AD49F1179}", PLUGIN_TYPE_SEPARATEWINDOW);
    machine.registerPlugin(L"not a class", PLUGIN_TYPE_BACKGROUND);
    const auto factory = makeObject<FakeFactory>(m_notes);
    DWORD cookie = 0;
    ASSERT_EQ(CoRegisterClassObject(kFakePlugin, factory.get(), CLSCTX_INPROC_SERVER,
                                    REGCLS_MULTIPLEUSE, &cookie),
              S_OK);

    Player& player = startWithWindow();
    EXPECT_EQ(player.plugins().loadRegistered(), 1U);
    EXPECT_EQ(player.plugins().loadRegistered(), 1U) << "loaded twice";
    EXPECT_TRUE(reported("1178} could not be created"));
    EXPECT_FALSE(reported("1179}"));
    const std::vector<std::string> attached = {"core"};
    EXPECT_EQ(m_notes.lines, attached);

    machine.unregisterPlugin(name);
    player.plugins().dropUnregistered();
    const std::vector<std::string> dropped = {"core", "no core"};
    EXPECT_EQ(m_notes.lines, dropped);
    EXPECT_EQ(m_notes.alive, 0);
    CoRevokeClassObject(cookie);
}

TEST_F(PluginsTest, SendToPassesWhatTheScriptNames) {
    Player& player = startWithWindow();
    ComRef<IWMPPlaylistCollection> playlists;
    ComRef<IWMPPlaylist> made;
    ASSERT_EQ(player.core()->get_playlistCollection(playlists.put()), S_OK);
    ASSERT_EQ(playlists->newPlaylist(Text(L"My List").get(), made.put()), S_OK);
    made->appendItem(player.item(1).get());
    player.plugins().attach(makeObject<FakePlugin>(m_notes).get());

    runScript({"sendto-media 2 0", "sendto-playlist \"My List\"", "sendto-media 3",
               "sendto-playlist nothing", "setcore-null", "sendto-odd"});
    EXPECT_EQ(m_failures, 2U);
    ASSERT_GE(m_notes.lines.size(), 6U);
    EXPECT_EQ(m_notes.lines[1], "MediaSendTo: M:\\Synthetic\\3.wma M:\\Synthetic\\1.wma");
    EXPECT_EQ(m_notes.lines[2], "PlaylistSendTo: list of 1");
    EXPECT_EQ(m_notes.lines[3], "no core");
    EXPECT_EQ(m_notes.lines[4], "MediaSendTo: null list of 0 other M:\\Synthetic\\1.wma");
    EXPECT_EQ(m_notes.lines.back(), "");
}

TEST_F(PluginsTest, AWholeLibraryIsSentInWellUnderASecond) {
    startWithWindow(20'000);
    m_player->plugins().attach(makeObject<FakePlugin>(m_notes).get());
    const ULONGLONG begin = GetTickCount64();
    runScript({"sendto-media all"});
    EXPECT_LT(GetTickCount64() - begin, 3000U);
    ASSERT_EQ(m_notes.lines.size(), 2U);
    EXPECT_TRUE(m_notes.lines[1].ends_with("M:\\Synthetic\\20000.wma"));
}

TEST_F(PluginsTest, TheScriptMovesTheWindowAndWaitsWithoutStoppingIt) {
    Player& player = startWithWindow();
    const HWND window = player.window();
    EXPECT_EQ(FindWindowW(L"WMPlayerApp", L"Windows Media Player"), window);
    EXPECT_FALSE(IsWindowVisible(window));
    const ULONGLONG begin = GetTickCount64();
    runScript({"show", "# a comment", "", "wait 200", "special"});
    EXPECT_GE(GetTickCount64() - begin, 190U);
    EXPECT_EQ(m_failures, 0U);
    RECT r{};
    GetWindowRect(window, &r);
    EXPECT_EQ(r.right - r.left, 300);
    EXPECT_EQ(r.bottom - r.top, 80);
    runScript({"maximise"});
    EXPECT_TRUE(IsZoomed(window));
    runScript({"minimise", "hide"});
    EXPECT_TRUE(IsIconic(window));
    EXPECT_FALSE(IsWindowVisible(window));
    runScript({"normal", "play 1", "wait-state playing", "pause", "wait-state paused",
               "option --never=stopped", "stop", "wait-state stopped 100"});
    EXPECT_EQ(m_failures, 1U) << "only the last wait is in vain";
    EXPECT_FALSE(IsIconic(window));
    runScript({"dance", "move 1 2 3", "play 99", "option --dance", "set loop maybe", "wait soon"});
    EXPECT_EQ(m_failures, 6U);
}

TEST_F(PluginsTest, ClosingTakesTheCoreAndReleasesFirst) {
    Player& player = startWithWindow();
    player.plugins().attach(makeObject<FakePlugin>(m_notes).get());
    bool closed = false;
    player.mainWindow()->onClose = [&] {
        player.plugins().unloadAll();
        EXPECT_TRUE(IsWindow(player.window())) << "a plug-in still wants its window";
        DestroyWindow(player.window());
        closed = true;
    };
    runScript({"close"});
    EXPECT_TRUE(player.pumpUntil([&] { return closed; }, 2000));
    EXPECT_EQ(player.window(), nullptr);
    const std::vector<std::string> expected = {"core", "no core"};
    EXPECT_EQ(m_notes.lines, expected);
    EXPECT_EQ(m_notes.alive, 0);
}

TEST(PlayerOptionsTest, ArgumentsAreReadOrRefusedWithAReason) {
    PlayerOptions options;
    std::string error;
    EXPECT_TRUE(parseOptions(
        {L"--library=C:\\Müsik =1", L"--never=playing", L"--mode=loop:on", L"--error=0xC00D1197",
         L"--start-delay=2000", L"--no-plugins", L"--fail-call=IWMPCore::get_Error"},
        options, error));
    EXPECT_EQ(options.library.wstring(), L"C:\\Müsik =1");
    EXPECT_EQ(options.neverReached, std::set<long>{3});
    EXPECT_TRUE(options.modes[L"loop"]);
    EXPECT_EQ(static_cast<unsigned long>(options.errors.at(0)), 0xC00D1197U);
    EXPECT_EQ(options.startDelayMs, 2000U);
    EXPECT_FALSE(options.loadPlugins);
    EXPECT_TRUE(options.failCalls.contains("IWMPCore::get_Error"));
    for (const wchar_t* wrong :
         {L"--dance", L"library", L"--library", L"--library=", L"--hidden=1", L"--start-delay=2s",
          L"--start-delay=", L"--start-delay=99999999999", L"--mode=loop", L"--never=soon"}) {
        error.clear();
        EXPECT_FALSE(parseOptions({wrong}, options, error)) << toUtf8(wrong);
        EXPECT_FALSE(error.empty());
    }
    const std::string help = usageText();
    EXPECT_NE(help.find("--serve-on-own-thread"), std::string::npos);
    EXPECT_NE(help.find("sendto-media"), std::string::npos);
}

}  // namespace
}  // namespace orvane::standin
