// Eight processes write the shared log, and the plug-in in the player with them, while one of the
// eight is killed every 100 ms.

#include "soak/phase.h"

#include <array>

namespace orvane::soak {
namespace {

constexpr DWORD kPeriodMs = 100;

class Logging final : public Phase {
public:
    explicit Logging(Stage& stage) : Phase(stage, "logger killed", 0.12, 20), m_app(stage) {}

    void begin() override {
        // Without its application the plug-in tells so with every attempt to reconnect.
        m_app.start();
        m_app.waitForPipes();
        if (!m_stage.host.create()) throw Broken("no object is made though the pipes are there");
        m_app.kill();
        ++kills;
        m_stage.host.useDuring([this] {
            for (auto& logger : m_loggers) start(logger);
        });
    }
    void round() override {
        auto& victim = m_loggers[m_stage.host.random()() % m_loggers.size()];
        m_stage.host.useDuring([&] {
            const ULONGLONG next = GetTickCount64() + kPeriodMs;
            kill(victim);
            start(victim);
            const ULONGLONG now = GetTickCount64();
            if (now < next) Sleep(static_cast<DWORD>(next - now));
        });
    }
    void end() override {
        m_stage.host.useDuring([this] {
            for (auto& logger : m_loggers) kill(logger);
        });
        m_stage.host.letGo();
    }

private:
    void start(std::optional<OtherMode>& logger) {
        logger.emplace(L"--logger " + std::to_wstring(++m_number));
    }
    void kill(std::optional<OtherMode>& logger) {
        logger.reset();
        ++kills;
    }

    AppProcess m_app;
    std::array<std::optional<OtherMode>, 8> m_loggers;
    unsigned m_number = 0;
};

}  // namespace

std::unique_ptr<Phase> makeLogging(Stage& stage) { return std::make_unique<Logging>(stage); }

}  // namespace orvane::soak
