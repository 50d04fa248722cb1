#include "tests/plugin/linked_plugin.h"

#include "common/text_coding.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"

namespace orvane::test {

class EventLink::EventPipe final : public PipeBroadcaster {
public:
    EventPipe() : PipeBroadcaster("IpcOrvaneEventPipe") {}
    ~EventPipe() override { close(); }

    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = OrvaneMessage::parse(decodePayload(payload));
        const std::scoped_lock lock(m_mutex);
        m_messages.push_back(message != nullptr ? *message : OrvaneMessage("none", "unreadable"));
    }
    std::size_t count() {
        const std::scoped_lock lock(m_mutex);
        return m_messages.size();
    }
    std::vector<OrvaneMessage> take() {
        const std::scoped_lock lock(m_mutex);
        return std::exchange(m_messages, {});
    }

private:
    std::mutex m_mutex;
    std::vector<OrvaneMessage> m_messages;
};

class EventLink::CommandPipe final : public PipeBroadcaster {
public:
    CommandPipe() : PipeBroadcaster("IpcOrvaneCommandPipe") {}
    ~CommandPipe() override { close(); }
    void messageReceived(std::span<const std::uint8_t>) override {}
};

EventLink::EventLink()
    : m_running(CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process")),
      m_events(std::make_unique<EventPipe>()),
      m_commands(std::make_unique<CommandPipe>()) {
    EXPECT_TRUE(m_events->initConnection());
    EXPECT_TRUE(m_commands->initConnection());
}

EventLink::~EventLink() = default;

std::size_t EventLink::count() const { return m_events->count(); }

std::vector<OrvaneMessage> EventLink::take() { return m_events->take(); }

void LinkedPluginTest::SetUp() {
    standin::PlayerOptions options;
    options.library = ORVANE_TEST_DATA;
    options.startDelayMs = 10;
    options.stopDelayMs = 10;
    options.pauseDelayMs = 10;
    m_player = std::make_unique<standin::Player>(options);
    std::string error;
    ASSERT_TRUE(m_player->openLibrary(error)) << error;
    ASSERT_TRUE(m_player->createWindow());
    m_app = std::make_unique<EventLink>();

    CComPtr<IClassFactory> factory;
    ASSERT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                             reinterpret_cast<void**>(&factory)),
              S_OK);
    ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI),
                                      reinterpret_cast<void**>(&m_plugin)),
              S_OK);
    ASSERT_EQ(m_plugin.QueryInterface(&m_sink), S_OK);
    ASSERT_EQ(m_plugin->SetCore(m_player->core()), S_OK);
    ASSERT_EQ(eventNames(1), std::vector<std::string>{"PlayerHello"});
}

void LinkedPluginTest::TearDown() {
    if (m_plugin) m_plugin->SetCore(nullptr);
    m_sink.Release();
    m_plugin.Release();
    m_app.reset();
    m_player.reset();
}

std::wstring LinkedPluginTest::pathOf(const std::wstring& fileName) const {
    for (std::size_t i = 0; i < m_player->itemCount(); ++i) {
        const std::wstring path = m_player->itemPath(i);
        if (path.ends_with(L"\\" + fileName)) return path;
    }
    ADD_FAILURE() << "no such sample";
    return {};
}

CComPtr<IWMPMedia> LinkedPluginTest::mediaOf(const std::wstring& fileName) const {
    const std::wstring path = pathOf(fileName);
    for (std::size_t i = 0; i < m_player->itemCount(); ++i) {
        if (m_player->itemPath(i) == path) return CComPtr<IWMPMedia>(m_player->item(i).get());
    }
    return {};
}

std::vector<OrvaneMessage> LinkedPluginTest::events(std::size_t expected) {
    m_player->pumpUntil([&] { return m_app->count() >= expected; }, 5000);
    m_player->pump(60);
    return m_app->take();
}

std::vector<std::string> LinkedPluginTest::eventNames(std::size_t expected) {
    std::vector<std::string> names;
    for (const OrvaneMessage& event : events(expected)) {
        EXPECT_EQ(event.getValue("Player"), "wmp");
        names.push_back(event.getName().toStdString());
    }
    return names;
}

}  // namespace orvane::test
