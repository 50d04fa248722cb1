#pragma once

#include <filesystem>
#include <string>

namespace orvane::check {

// All .wma files of a folder that the other one, which is made, does not have. Answers how many
// there are.
std::size_t copyTracks(const std::filesystem::path& from, const std::filesystem::path& to);
// In quotation marks, for a command line or a script.
[[nodiscard]] std::wstring quoted(const std::filesystem::path& path);

// The folders that a run uses.
struct Kit {
    using Path = std::filesystem::path;
    Path top;                // has the sample tracks and the application's scripts
    Path programs;           // of check.exe and all that it starts
    Path work;               // for the files of a run
    bool keepsWork = false;  // they stay after the run
    [[nodiscard]] Path tracks() const { return top / "tests" / "data"; }
    [[nodiscard]] Path scripts() const { return top / "scripts" / "demo"; }
    // The stand-in for the Format runtime is placed beside the programs only while it is used.
    [[nodiscard]] Path standIn() const { return programs / "stand-in" / "wmvcore.dll"; }
    [[nodiscard]] Path placedStandIn() const { return programs / "wmvcore.dll"; }
    [[nodiscard]] Path list() const { return top / "check" / "kit.txt"; }
    [[nodiscard]] Path report() const { return (keepsWork ? work : top) / "report.txt"; }
    // A file with what a check that was cut short has to put back.
    [[nodiscard]] Path backup() const { return programs / "before.bin"; }
};
// Around this program: the unpacked kit, or the tree that it was built in.
[[nodiscard]] Kit findKit();

}  // namespace orvane::check
