#pragma once

#include <windows.h>

namespace orvane {

// Security attributes that give everyone full access (a null DACL); the handle is not inherited.
// All users of the machine share the log's mutex and file.
class OpenSecurity {
public:
    // `who` names the caller in diagnostics.
    explicit OpenSecurity(const char* who) noexcept;
    OpenSecurity(const OpenSecurity&) = delete;  // the attributes point into the object
    OpenSecurity& operator=(const OpenSecurity&) = delete;

    // Null when the descriptor could not be built.
    [[nodiscard]] SECURITY_ATTRIBUTES* attributes() noexcept {
        return m_ready ? &m_attributes : nullptr;
    }

private:
    SECURITY_DESCRIPTOR m_descriptor{};
    SECURITY_ATTRIBUTES m_attributes{};
    bool m_ready = false;
};

}  // namespace orvane
