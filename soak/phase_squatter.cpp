// A program that has the application's names never reads: the player may be held up by one write
// for each time that it takes the plug-in in.

#include "soak/phase.h"

namespace orvane::soak {
namespace {

class Squatter final : public Phase {
public:
    explicit Squatter(Stage& stage) : Phase(stage, "squatter never reads", 0.06, 2) {}

    void begin() override {
        m_process.emplace(L"--squatter " + m_stage.countsName);
        waitForPipes(m_stage.host);
        if (!m_stage.host.create()) throw Broken("no object is made though the pipes are there");
    }
    void round() override {
        m_stage.host.useDuring([this] {
            const std::uint32_t before = m_stage.counts->hellos;
            if (!eventually([&] { return m_stage.counts->hellos != before; }, 12'000))
                throw Broken("the plug-in did not try again within 12 s");
        });
    }
    void end() override {
        m_stage.host.letGo();
        m_process.reset();
    }

private:
    std::optional<OtherMode> m_process;
};

}  // namespace

std::unique_ptr<Phase> makeSquatter(Stage& stage) { return std::make_unique<Squatter>(stage); }

}  // namespace orvane::soak
