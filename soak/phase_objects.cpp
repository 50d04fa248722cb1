// The object is made and let go, every other time with the application killed at any moment of its
// life; and the module is loaded and freed around it.

#include "soak/phase.h"

#include <thread>

namespace orvane::soak {
namespace {

class Objects final : public Phase {
public:
    explicit Objects(Stage& stage) : Phase(stage, "object made, let go", 0.12, 20), m_app(stage) {}

    void begin() override {
        m_made = 0;
        m_app.start();
    }
    void round() override {
        Host& host = m_stage.host;
        m_app.waitForPipes();
        const bool kill = host.random()() % 2 == 0;
        const auto delay = static_cast<DWORD>(host.random()() % 60);
        std::jthread killer([&, kill] {
            if (!kill) return;
            Sleep(delay);
            m_app.kill();
            ++kills;
            m_app.start();
        });
        const bool made = host.create();
        if (made) ++m_made;
        for (auto uses = host.random()() % 6; made && uses > 0; --uses) host.use();
        host.letGo();
        host.useDuring([&] { killer.join(); });
        if (!made && !kill) throw Broken("no object is made though the pipes are there");
    }
    void end() override { m_app.kill(); }
    [[nodiscard]] std::string note() const override { return std::to_string(m_made) + " made"; }

private:
    AppProcess m_app;
    unsigned m_made = 0;
};

class Unloads final : public Phase {
public:
    explicit Unloads(Stage& stage) : Phase(stage, "module loaded, freed", 0.06, 5), m_app(stage) {
        // The thread library that is linked in keeps as many of each load, whatever the module
        // does.
        handlesPerRound = 4;
    }

    void begin() override {
        m_app.start();
        free();
    }
    void round() override {
        Host& host = m_stage.host;
        m_app.waitForPipes();
        host.load();
        if (!host.create()) throw Broken("no object is made though the pipes are there");
        for (auto uses = host.random()() % 6; uses > 0; --uses) host.use();
        host.letGo();
        free();
    }
    void end() override {
        m_app.kill();
        m_stage.host.load();
    }

private:
    void free() {
        if (!m_stage.host.free()) throw Broken("the module stays 3 s after it was freed");
    }

    AppProcess m_app;
};

}  // namespace

std::unique_ptr<Phase> makeObjects(Stage& stage) { return std::make_unique<Objects>(stage); }
std::unique_ptr<Phase> makeUnloads(Stage& stage) { return std::make_unique<Unloads>(stage); }

}  // namespace orvane::soak
