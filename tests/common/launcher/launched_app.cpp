// What the launcher tests install as the application. It writes down how it was started and then
// ends as it is told: ORVANE_TEST_REPORT names the file, ORVANE_TEST_EXIT the exit code, or "stay".

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

int main() try {
    const auto utf8 = [](const wchar_t* text) {
        const std::u8string result = std::filesystem::path(text).u8string();
        return std::string(result.begin(), result.end());
    };
    const auto environment = [](const char* name) {
        const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): one thread
        return std::string(value != nullptr ? value : "");
    };
    wchar_t directory[1024] = {};
    GetCurrentDirectoryW(1024, directory);
    std::ofstream(environment("ORVANE_TEST_REPORT"), std::ios::binary)
        << utf8(GetCommandLineW()) << '\n'
        << utf8(directory) << '\n';

    const std::string exit = environment("ORVANE_TEST_EXIT");
    if (exit != "stay") return std::atoi(exit.c_str());
    WaitForSingleObject(CreateEventW(nullptr, TRUE, FALSE, L"OrVaneTestAppLeave"), 20000);
    return 0;
} catch (...) {
    return 99;
}
