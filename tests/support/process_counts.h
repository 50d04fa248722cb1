#pragma once

#include "soak/process_state.h"

namespace orvane::test {

inline int threadsOfThisProcess() { return soak::ProcessState::now().threads; }
inline int handlesOfThisProcess() { return soak::ProcessState::now().handles; }

}  // namespace orvane::test
