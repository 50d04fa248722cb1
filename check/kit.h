#pragma once

#include <filesystem>
#include <string>

namespace orvane::check {

// Copies the .wma files of a folder to another folder, which is created, unless they exist there.
// Returns their number.
std::size_t copyTracks(const std::filesystem::path& from, const std::filesystem::path& to);
// The path in quotation marks, for a command line or a script.
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
    // The file with the state that an interrupted check has to restore.
    [[nodiscard]] Path backup() const { return programs / "before.bin"; }
};
// The kit that contains this program: the unpacked kit, or the build tree.
[[nodiscard]] Kit findKit();

}  // namespace orvane::check
