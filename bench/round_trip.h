#pragma once

namespace orvane::bench {

// An exchange on the command pipe and an event on the player's thread, each beside the system's
// bare calls with the same bytes and the same other end, in turns. Prints a row for each with its
// ratio to the bare one. There is no player behind it: what its own calls take is not the link's.
void measureBesideBareCalls();

}  // namespace orvane::bench
