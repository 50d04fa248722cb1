#pragma once

#include <functional>
#include <memory>

namespace orvane {

// What the maker of a connector gives along with its IOrvanePluginMethods, so that closing need not
// wait for ever for a command that hangs in a call of the player's.
//
// Asked at most once a connector, by its destructor and on that thread, when the command that runs
// has not ended within Pipe::kClosePatienceMs. The answer owns whatever the command may still use:
// the object behind IOrvanePluginMethods stays whole while it is held (a counted reference to it
// will do). The thread that is left behind holds it, and lets it go as the last thing it does,
// inside its single-threaded apartment; the object's last reference may thus be given back on a
// thread that is not its own. The module is the thread's own concern: it holds a reference to it
// until it has left its code.
//
// Without one, or when the answer is null, closing waits for the command for as long as it takes.
// Neither the call nor letting go of the answer may throw.
using KeepAlive = std::function<std::shared_ptr<void>()>;

}  // namespace orvane
