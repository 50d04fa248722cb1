// What the launcher tests install as the application. It writes down how it was started and then
// ends as it is told: ORVANE_TEST_REPORT names the file, ORVANE_TEST_EXIT the exit code, or "stay".

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

std::string toUtf8(const wchar_t* text) {
    const std::u8string result = std::filesystem::path(text).u8string();
    return {result.begin(), result.end()};
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

int main() {
    wchar_t directory[1024] = {};
    GetCurrentDirectoryW(1024, directory);
    std::ofstream(environment("ORVANE_TEST_REPORT"), std::ios::binary)
        << toUtf8(GetCommandLineW()) << '\n'
        << toUtf8(directory) << '\n';

    const std::string exit = environment("ORVANE_TEST_EXIT");
    if (exit != "stay") return std::atoi(exit.c_str());
    const HANDLE leave = CreateEventW(nullptr, TRUE, FALSE, L"OrVaneTestAppLeave");
    WaitForSingleObject(leave, 20000);
    return 0;
}
