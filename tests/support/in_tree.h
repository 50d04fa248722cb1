#pragma once

// A test's files are looked for upwards of its program's folder: that is build/PRESET here, and a
// folder of the check kit on a user's machine.

#include <filesystem>

#ifdef _WIN32
#include <windows.h>
#endif

namespace orvane::test {

inline std::filesystem::path inTree(const std::filesystem::path& name) {
#ifdef _WIN32
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), 32768));
    std::filesystem::path folder(program);
#else
    std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe");
#endif
    while (folder.has_relative_path()) {
        folder = folder.parent_path();
        if (exists(folder / name)) return folder / name;
    }
    return name;
}

// The sample tracks.
inline std::filesystem::path testData() { return inTree("tests/data"); }

}  // namespace orvane::test
