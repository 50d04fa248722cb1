// The application is killed at any moment, with traffic both ways; the link comes back to the next
// one. Now and then it has stopped reading before.

#include "soak/phase.h"

#include "harness/raw_server.h"

namespace orvane::soak {

OtherMode::OtherMode(const std::wstring& arguments)
    : Child({.commandLine = L"orvane_soak.exe " + arguments, .output = L"NUL"}) {}

void waitForPipes(Host& host) {
    host.useDuring([] {
        const auto there = [] {
            return WaitNamedPipeW(test::pipePath(names::kEventPipe.narrow()).c_str(), 1) != FALSE &&
                   WaitNamedPipeW(test::pipePath(names::kCommandPipe.narrow()).c_str(), 1) != FALSE;
        };
        if (!eventually(there, 15'000)) throw Broken("the pipes were not made within 15 s");
    });
}

void AppProcess::start(bool deaf) {
    m_process.emplace((deaf ? L"--deaf-application " : L"--application ") + m_stage.countsName);
}

void AppProcess::waitForPipes() { soak::waitForPipes(m_stage.host); }

namespace {

// The reconnect timer's period twice, as a command that still runs puts it off once, and the time
// for a new process on a busy machine.
constexpr unsigned kLinkMs = 2 * 2000 + 4000;

class Kills final : public Phase {
public:
    explicit Kills(Stage& stage) : Phase(stage, "application killed", 0.6, 10), m_app(stage) {}

    void begin() override {
        m_underTraffic = 0;
        m_app.start();
        m_app.waitForPipes();
        if (!m_stage.host.create()) throw Broken("no object is made though the pipes are there");
        m_app.kill();
    }
    void round() override {
        auto& random = m_stage.host.random();
        const bool linked = random() % 8 != 0;  // otherwise killed perhaps before, perhaps within
        const bool deaf = random() % 16 == 0;
        const auto delay = static_cast<DWORD>(random() % (deaf ? 2600 : linked ? 300 : 2300));
        m_stage.host.useDuring([&] {
            const std::uint32_t before = m_stage.counts->hellos;
            const auto isLinked = [&] { return m_stage.counts->hellos != before; };
            m_app.start(deaf);
            if (linked && !eventually(isLinked, kLinkMs))
                throw Broken("the link did not come back within 8 s");
            Sleep(delay);
            m_underTraffic += isLinked() ? 1 : 0;
            m_app.kill();
            ++kills;
        });
    }
    void end() override { m_stage.host.letGo(); }
    [[nodiscard]] std::string note() const override {
        return std::to_string(m_underTraffic) + " of them linked";
    }

private:
    AppProcess m_app;
    unsigned m_underTraffic = 0;
};

}  // namespace

std::unique_ptr<Phase> makeKills(Stage& stage) { return std::make_unique<Kills>(stage); }

}  // namespace orvane::soak
