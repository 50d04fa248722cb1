#pragma once

#include <windows.h>

namespace orvane {

// Security attributes that give everyone full access (a null DACL), with a handle that no child
// inherits: the log's lock and file belong to all users of the machine.
class OpenSecurity {
public:
    // `who` opens the messages about a failure.
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
