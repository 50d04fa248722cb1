// "Send To" of 150,000 tracks, more than fits one message: all arrive, in their order.

#include "soak/phase.h"

namespace orvane::soak {
namespace {

constexpr std::uint32_t kTracks = 150'000;
constexpr std::uint32_t kHashStart = 2166136261;

std::vector<std::wstring> manyPaths() {
    std::vector<std::wstring> paths;
    paths.reserve(kTracks);
    for (std::uint32_t i = 0; i < kTracks; ++i)
        paths.push_back(L"M:\\Musik & Küche\\An artist " + std::to_wstring(i / 120) +
                        L"\\An album " + std::to_wstring(i / 12 % 10) + L"\\" + std::to_wstring(i) +
                        L" A title.wma");
    return paths;
}

class Selection final : public Phase {
public:
    explicit Selection(Stage& stage) : Phase(stage, "150,000 tracks sent", 0.04, 2), m_app(stage) {
        // The player's thread reads and writes some 15 MB here; no wait has part in it.
        blockLimitMs = 4500;
        const auto paths = manyPaths();
        m_hash = kHashStart;
        for (const auto& path : paths) m_hash = hashPath(m_hash, path.c_str());
        m_items = stage.host.makeItems(paths);
    }

    void begin() override {
        m_stage.host.selects = false;
        m_app.start();
        m_app.waitForPipes();
        if (!m_stage.host.create()) throw Broken("no object is made though the pipes are there");
    }
    void round() override {
        SharedCounts& counts = m_stage.counts;
        counts->tracks = 0;
        counts->lists = 0;
        counts->tracksHash = kHashStart;
        m_stage.host.send(m_items);
        m_stage.host.useDuring(
            [&] { eventually([&] { return counts->tracks >= kTracks; }, 30'000); });
        if (counts->tracks != kTracks)
            throw Broken(std::to_string(counts->tracks) + " of 150,000 tracks arrived");
        if (counts->tracksHash != m_hash)
            throw Broken("the tracks did not arrive as they were sent");
        m_lists = counts->lists;
        if (m_lists < 2) throw Broken("the selection came in one event: it is too small a test");
    }
    void end() override {
        m_stage.host.letGo();
        m_app.kill();
        m_stage.host.selects = true;
    }
    [[nodiscard]] std::string note() const override {
        return "in " + std::to_string(m_lists) + " events";
    }

private:
    AppProcess m_app;
    std::uint32_t m_hash;
    std::uint32_t m_lists = 0;
    std::vector<CComPtr<IUnknown>> m_items;
};

}  // namespace

std::unique_ptr<Phase> makeSelection(Stage& stage) { return std::make_unique<Selection>(stage); }

}  // namespace orvane::soak
