#pragma once

// Each function measures and prints one group of rows. The calling thread has initialised COM. When
// a measurement fails, the program ends with an error message.

namespace orvane::bench {

void measureLoading();  // loads and frees the module beside this program
void measureLog();
void measureLink();        // the round trip and the event
void measureReconnect();   // no application may run
void measureSelections();  // 10,000 and 40,000 paths
void measurePlayer(unsigned items);
void measureIdle();  // 20 s

}  // namespace orvane::bench
