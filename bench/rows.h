#pragma once

// The rows of orvane_bench, a group each. COM is up on the calling thread; JUCE is not, but for
// those that say so. The program ends with a sentence when a row cannot be taken.

namespace orvane::bench {

void measureLoading();  // loads and frees the module beside this program
void measureLog();
void measureLink();        // the round trip and the event
void measureReconnect();   // nobody may listen
void measureSelections();  // 10,000 and 40,000 paths
void measurePlayer(unsigned items);
void measureIdle();  // 20 s

}  // namespace orvane::bench
