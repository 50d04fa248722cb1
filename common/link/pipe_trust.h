#pragma once

#include <windows.h>

namespace orvane {

// Whether the maker of a pipe that we have opened is trusted. Any program of any user can make one
// of our names while the application is not there, and would be told what plays and could give
// commands. Both checks read what the pipe itself says; its server cannot raise either.

// True for this user, the administrators (the owner of what an elevated program makes) and the
// system.
[[nodiscard]] bool isTrustedOwner(PSID owner, PSID thisUser);

// The integrity level that a pipe has by its mandatory label. Without a label it is medium, or high
// when its owner is one that only an elevated process can give it.
[[nodiscard]] DWORD levelOfPipe(const ACL* label, PSID owner);

// Null for a pipe to link to, otherwise why not, for the log. Refuses a pipe that another user
// owns, and one whose integrity level is below that of a pipe that this process makes, or cannot be
// read where that one can. An owner that the system does not tell counts as trusted.
// GetSecurityInfo (OWNER_SECURITY_INFORMATION, LABEL_SECURITY_INFORMATION).
[[nodiscard]] const char* whyNotTrusted(HANDLE pipe);

}  // namespace orvane
