#pragma once

#include <windows.h>

namespace orvane {

// Checks whether the creator of an opened pipe is trusted. While the application does not run, any
// program of any user can create a pipe of its name; it would receive the events and could send
// commands. The checks read the pipe's owner and integrity label, which its server cannot raise.

// True for this user, the system and the administrators, who own the objects of an elevated
// program.
[[nodiscard]] bool isTrustedOwner(PSID owner, PSID thisUser);

// The pipe's integrity level by its mandatory label. Without a label it is medium, or high when
// only an elevated process can set its owner.
[[nodiscard]] DWORD levelOfPipe(const ACL* label, PSID owner);

// Null for a trusted pipe, otherwise the reason for the log. Refuses a pipe that another user owns,
// and a pipe whose integrity level is below the level of a pipe that this process creates, or
// cannot be read although that one can. An owner that the system does not return counts as trusted.
// GetSecurityInfo (OWNER_SECURITY_INFORMATION, LABEL_SECURITY_INFORMATION).
[[nodiscard]] const char* whyNotTrusted(HANDLE pipe);

}  // namespace orvane
