#pragma once

// The names under which the application, the plug-in, the installer and the scripts find each
// other. Each is written here and nowhere else in the product: scripts/common.sh reads this file
// for the scripts and for makensis (`name_of kSettingsKey`), so a definition stays on one line.
// Other programs rely on them: none may change.

#include <cstddef>

namespace orvane::names {

// One literal, for the narrow and for the wide calls. ASCII only.
template <std::size_t size>
class Name {
public:
    // Not explicit and not for run time: a definition reads `Name kName("text")`.
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

// Somebody holds this mutex, in the session's own namespace, while the application runs.
inline constexpr Name kRunningMutex("OrVaneApp_Process");

// Below \\.\pipe\; the application makes both.
inline constexpr Name kEventPipe("IpcOrvaneEventPipe");
inline constexpr Name kCommandPipe("IpcOrvaneCommandPipe");

// Below HKEY_LOCAL_MACHINE, in the 32-bit view: the folder of the application.
inline constexpr Name kSettingsKey("Software\\OrVaneMedia\\Settings");
inline constexpr Name kPathValue("Path");
inline constexpr Name kApplicationFile("OrVaneApp.exe");

inline constexpr Name kModuleFile("OrVaneWmpPlugin.dll");

// The plug-in's class, as the registry writes it.
inline constexpr Name kClassId("{9893A0E1-EE98-448F-81EE-D2D15666215E}");

}  // namespace orvane::names
