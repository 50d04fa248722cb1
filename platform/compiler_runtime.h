#pragma once

namespace orvane {

// The compiler's runtime that is linked into this module takes from the process what it keeps when
// the module is freed: a slot of thread-local storage, of which a process has some thousand and
// without which the runtime ends it, and the 20 KB in which exceptions are made when there is no
// memory. After a thousand loads the player would be gone.
//
// Called when the module is freed and the process goes on: both go back as the module's last act.
// Without the call nothing happens, as process exit wants it.
void giveBackRuntimeAtEnd() noexcept;

}  // namespace orvane
