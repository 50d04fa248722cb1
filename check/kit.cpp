#include "check/kit.h"

#include <windows.h>

namespace orvane::check {

namespace fs = std::filesystem;

std::size_t copyTracks(const fs::path& from, const fs::path& to) {
    fs::create_directories(to);
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(from)) {
        if (entry.path().extension() != ".wma") continue;
        const fs::path copy = to / entry.path().filename();
        if (!fs::exists(copy)) fs::copy_file(entry.path(), copy);
        ++count;
    }
    return count;
}

std::wstring quoted(const fs::path& path) { return L"\"" + path.native() + L"\""; }

Kit findKit() {
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), 32768));
    Kit kit;
    kit.programs = kit.top = fs::path(program).parent_path();
    while (kit.top.has_relative_path() && !exists(kit.tracks())) kit.top = kit.top.parent_path();
    kit.work = fs::temp_directory_path() / "OrVane check";
    return kit;
}

}  // namespace orvane::check
