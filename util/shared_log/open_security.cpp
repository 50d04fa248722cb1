#include "util/shared_log/open_security.h"

#include "util/shared_log/log_diagnostics.h"

namespace orvane {

OpenSecurity::OpenSecurity(const char* who) noexcept {
    if (InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION) == 0) {
        diagnose("E: %s: failed to initialize security descriptor with error %d\n", who,
                 static_cast<int>(GetLastError()));
        return;
    }
    if (SetSecurityDescriptorDacl(&m_descriptor, TRUE, nullptr, FALSE) == 0) {
        diagnose("E: %s: failed to set security descriptor with error %d\n", who,
                 static_cast<int>(GetLastError()));
        return;
    }
    m_attributes.nLength = sizeof m_attributes;
    m_attributes.lpSecurityDescriptor = &m_descriptor;
    m_attributes.bInheritHandle = FALSE;
    m_ready = true;
}

}  // namespace orvane
