#pragma once

// How the application shows what goes over the pipes: a line for an event or a command; a response
// with its map as aligned lines below it.

#include "standins/app/protocol.h"

namespace orvane::standin::app {

// The caller puts the time before the first line.
String shown(const OrvaneMessage& message);
// "problem   event pipe          what is wrong", and such.
String shownLine(const char* kind, const String& name, const String& rest);

}  // namespace orvane::standin::app
