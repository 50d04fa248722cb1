#pragma once

namespace orvane {

// The thread library that is linked into this module takes a slot of thread-local storage from the
// process and keeps it when the module is freed. A process has some thousand of them, and without
// one the library ends it: the player would, after so many loads.
//
// Called when the module is freed and the process goes on: the slot goes back as the module's last
// act. Without the call nothing happens, as process exit wants it.
void giveBackThreadSlotsAtEnd() noexcept;

}  // namespace orvane
