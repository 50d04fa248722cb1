#pragma once

// How the application shows what goes over the pipes: a line for an event, a command, a problem;
// a response with its map as aligned lines below it.

#include <string>

#include "standins/app/arrivals.h"

namespace orvane::standin::app {

// What an arrival looks like; the caller puts the time before the first line.
std::string shown(const Arrival& arrival);

// A command as it is sent.
std::string shownCommand(const std::string& name, const Parameters& parameters);

// "22:14:03.512", local time.
std::string timeNow();

}  // namespace orvane::standin::app
