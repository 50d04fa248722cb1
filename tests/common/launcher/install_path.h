#pragma once

#include <string>

#include "tests/support/saved_value.h"

namespace orvane::test {

// The registry value that names the application's folder; there is none at first.
class InstallPath : public SavedValue {
public:
    InstallPath() : SavedValue(L"Software\\OrVaneMedia\\Settings", L"Path") { remove(); }
    explicit InstallPath(const std::wstring& folder) : InstallPath() { set(folder); }
};

}  // namespace orvane::test
