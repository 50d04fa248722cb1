#pragma once

// The whole road of an event: a real player's objects over the sample tracks, the plug-in, and the
// application's end of the pipes, where the test reads what arrived.

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/orvane_message.h"
#include "common/pipe_broadcaster.h"
#include "platform/atlbase.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"
#include "standins/player/player.h"

namespace orvane::test {

// The running application as far as the plug-in can tell.
class EventLink {
public:
    EventLink();
    ~EventLink();

    [[nodiscard]] std::size_t count() const;
    // What arrived since the last call, in order.
    std::vector<OrvaneMessage> take();

private:
    class EventPipe;
    class CommandPipe;

    UniqueHandle m_running;
    std::unique_ptr<EventPipe> m_events;
    std::unique_ptr<CommandPipe> m_commands;
};

class LinkedPluginTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // The player's sample track with that file name.
    [[nodiscard]] std::wstring pathOf(const std::wstring& fileName) const;
    [[nodiscard]] CComPtr<IWMPMedia> mediaOf(const std::wstring& fileName) const;

    // What arrived, once there are so many events; a moment longer shows whether there are more.
    std::vector<OrvaneMessage> events(std::size_t expected);
    std::vector<std::string> eventNames(std::size_t expected);

    [[nodiscard]] IWMPPluginUI& plugin() { return *m_plugin; }
    [[nodiscard]] IWMPEvents& sink() { return *m_sink; }

    standin::ComApartment m_com;
    std::unique_ptr<standin::Player> m_player;
    std::unique_ptr<EventLink> m_app;
    CComPtr<IWMPPluginUI> m_plugin;
    CComPtr<IWMPEvents> m_sink;
};

}  // namespace orvane::test
