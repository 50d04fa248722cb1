#pragma once

#include <string>

namespace orvane::test {

// An empty folder of this test's own, deleted with all its content. Texts are UTF-8.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::string operator/(const std::string& name) const {
        return m_path + "\\" + name;
    }

private:
    std::string m_path;
};

[[nodiscard]] std::wstring wide(const std::string& text);

// An extended-length name made without the code under test.
[[nodiscard]] std::wstring plainLongName(const std::string& absolutePath);

void writeFile(const std::string& absolutePath, const std::string& content);
[[nodiscard]] std::string readFile(const std::string& absolutePath);  // "(none)" when missing
[[nodiscard]] bool isFolder(const std::string& absolutePath);
[[nodiscard]] bool isFile(const std::string& absolutePath);

}  // namespace orvane::test
