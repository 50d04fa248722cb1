#pragma once

#include <windows.h>

namespace orvane {

// Who made a pipe that we have opened. Any program of any user can make one of our names while the
// application is not there, and would be told what plays and could give commands.

// The owner that the system names for the pipe is let in when it is this user, the administrators
// (the owner of what an elevated program makes) or the system.
[[nodiscard]] bool isTrustedOwner(PSID owner, PSID thisUser);

// Null for a server to link to, otherwise why not, for the log. Refuses another owner's pipe and
// one that is served by a process of lower integrity than ours. What the system does not tell
// counts for the server. GetSecurityInfo, GetNamedPipeServerProcessId, GetTokenInformation.
[[nodiscard]] const char* whyNotTrusted(HANDLE pipe);

}  // namespace orvane
