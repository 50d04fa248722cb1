#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvane::check {

struct Tick {
    bool good = false;
    std::string what;
};

// What came of a run of player, plug-in and application.
struct Course {
    std::vector<Tick> ticks;
    std::string details;  // lines for the report: what went wrong, and the conversation
    [[nodiscard]] unsigned missed() const;
};

// The folders of the unpacked kit, and one for what a run leaves.
struct Kit {
    std::filesystem::path top;
    std::filesystem::path work;
    [[nodiscard]] std::filesystem::path programs() const { return top / "programs"; }
    [[nodiscard]] std::filesystem::path tracks() const { return top / "tests" / "data"; }
    [[nodiscard]] std::filesystem::path scripts() const { return top / "demo"; }
};

// Registers the plug-in (or takes that away), and names the kit's programs as OrVane's folder. Both
// need an administrator's rights; what they change is put back by Before. Answers what is wrong.
[[nodiscard]] std::string registerPlugin(const Kit& kit, bool registered = true);

// The demo: the stand-in player and the stand-in application, with the registered plug-in, on
// copies of the sample tracks. About half a minute.
[[nodiscard]] Course runDemo(const Kit& kit);

// The registered plug-in in the real player, with the stand-in application. About a minute.
[[nodiscard]] Course runRealPlayer(const Kit& kit, const std::filesystem::path& player);

}  // namespace orvane::check
