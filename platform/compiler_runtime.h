#pragma once

namespace orvane {

// The compiler's runtime that is linked into this module leaks two things when the module is freed:
// a slot of thread-local storage, and its 20 KB emergency memory for exceptions. A process has
// about a thousand slots, and the runtime aborts the process when none is left: the player would
// end after a thousand loads.
//
// Call this when the module is freed and the process goes on. Both are then released as the
// module's last action. At process exit, do not call it.
void giveBackRuntimeAtEnd() noexcept;

}  // namespace orvane
