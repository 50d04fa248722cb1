#pragma once

// A plug-in's module that nobody has registered: loaded by its file's name and made known to COM in
// this thread's apartment, until this object goes. That thread only.

#include <windows.h>

#include <functional>
#include <string>

#include "platform/handles.h"
#include "standins/player/com_support.h"

namespace orvane::standin {

class PluginModule {
public:
    PluginModule() = default;
    ~PluginModule();
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;

    // False with a sentence in `error` when the file is no module of the plug-in's.
    bool load(const std::wstring& file, std::string& error);
    [[nodiscard]] static const CLSID& classId();

private:
    UniqueModule m_module;
    DWORD m_registration = 0;
};

// Waits until the application has its mutex and both pipes; without them the plug-in would start
// the application that is installed, or refuse to be made.
void waitForApplication(const std::function<void(const std::string&)>& report);

}  // namespace orvane::standin
