#pragma once

// The names that the application, the plug-in, the installer and the scripts share: mutex, pipes,
// registry keys, class id. They are defined only here. scripts/common.sh reads this file for the
// scripts and for makensis (`name_of kSettingsKey`), so keep each definition on one line. Other
// programs rely on these names: do not change them.

#include <cstddef>

namespace orvane::names {

// A string literal as narrow and as wide text. ASCII only.
template <std::size_t size>
class Name {
public:
    // Implicit and consteval, so that a definition reads `Name kName("text")`.
    consteval Name(const char (&text)[size]) {
        for (std::size_t i = 0; i < size; ++i) {
            m_narrow[i] = text[i];
            m_wide[i] = static_cast<wchar_t>(text[i]);
        }
    }
    [[nodiscard]] constexpr const char* narrow() const { return m_narrow; }
    [[nodiscard]] constexpr const wchar_t* wide() const { return m_wide; }

private:
    char m_narrow[size]{};
    wchar_t m_wide[size]{};
};

// The mutex that exists, in the session's namespace, while the application runs.
inline constexpr Name kRunningMutex("OrVaneApp_Process");

// The pipes' names below \\.\pipe\. The application creates both.
inline constexpr Name kEventPipe("IpcOrvaneEventPipe");
inline constexpr Name kCommandPipe("IpcOrvaneCommandPipe");

// The key below HKEY_LOCAL_MACHINE, in the 32-bit view, and its value with the application's
// folder.
inline constexpr Name kSettingsKey("Software\\OrVaneMedia\\Settings");
inline constexpr Name kPathValue("Path");
inline constexpr Name kApplicationFile("OrVaneApp.exe");

inline constexpr Name kModuleFile("OrVaneWmpPlugin.dll");

// The plug-in's class id in the registry's form.
inline constexpr Name kClassId("{9893A0E1-EE98-448F-81EE-D2D15666215E}");

}  // namespace orvane::names
