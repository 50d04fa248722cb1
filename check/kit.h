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
    std::filesystem::path top;       // has the sample tracks and the application's scripts
    std::filesystem::path programs;  // of check.exe and all that it starts
    std::filesystem::path work;      // for the files of a run
    bool keepsWork = false;          // they stay after the run
    [[nodiscard]] std::filesystem::path tracks() const { return top / "tests" / "data"; }
    [[nodiscard]] std::filesystem::path scripts() const { return top / "scripts" / "demo"; }
    // The stand-in for the Format runtime is placed beside the programs only while it is used.
    [[nodiscard]] std::filesystem::path standIn() const {
        return programs / "stand-in" / "wmvcore.dll";
    }
    [[nodiscard]] std::filesystem::path placedStandIn() const { return programs / "wmvcore.dll"; }
    [[nodiscard]] std::filesystem::path list() const { return top / "check" / "kit.txt"; }
    [[nodiscard]] std::filesystem::path report() const {
        return (keepsWork ? work : top) / "report.txt";
    }
    // A file with what a check that was cut short has to put back.
    [[nodiscard]] std::filesystem::path backup() const { return programs / "before.bin"; }
};
// Around this program: the unpacked kit, or the tree that it was built in.
[[nodiscard]] Kit findKit();

}  // namespace orvane::check
