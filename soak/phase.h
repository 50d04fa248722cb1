#pragma once

// A phase is one kind of stress, such as killing the application, in many rounds.

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "harness/child.h"
#include "harness/waiting.h"
#include "soak/host.h"
#include "soak/shared_counts.h"

namespace orvane::soak {

// A failure; the text is a sentence for the report.
class Broken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Stage {
    Host& host;
    SharedCounts& counts;
    std::wstring countsName;
};

// A process of this program in another mode.
class OtherMode : public test::Child {
public:
    // `arguments` are the mode and its arguments.
    explicit OtherMode(const std::wstring& arguments);
};

// The application's process.
class AppProcess {
public:
    explicit AppProcess(Stage& stage) : m_stage(stage) {}

    void start(bool deaf = false);
    void kill() { m_process.reset(); }
    // Uses the player until the process has created the pipes. Throws after a time-out.
    void waitForPipes();

private:
    Stage& m_stage;
    std::optional<OtherMode> m_process;
};

// Uses the player until the pipes exist. Throws after 15 s.
void waitForPipes(Host& host);
using test::eventually;

class Phase {
public:
    Phase(Stage& stage, const char* phaseName, double phaseShare, unsigned leastRounds)
        : name(phaseName), share(phaseShare), least(leastRounds), m_stage(stage) {}
    virtual ~Phase() = default;
    Phase(const Phase&) = delete;
    Phase& operator=(const Phase&) = delete;

    virtual void begin() = 0;
    virtual void round() = 0;
    // Undoes begin(): no object and no process is left, and the module is loaded.
    virtual void end() = 0;
    // A remark for the table, or empty.
    [[nodiscard]] virtual std::string note() const { return {}; }

    const char* const name;
    const double share;    // of the whole time
    const unsigned least;  // rounds
    // One write may take 2 s; the rest is for a machine that is busy with a dozen processes.
    double blockLimitMs = 3000;
    double handlesPerRound = 0;  // an allowed growth that the plug-in does not cause
    unsigned kills = 0;

protected:
    Stage& m_stage;
};

std::unique_ptr<Phase> makeKills(Stage& stage);
std::unique_ptr<Phase> makeLogging(Stage& stage);
std::unique_ptr<Phase> makeObjects(Stage& stage);
std::unique_ptr<Phase> makeUnloads(Stage& stage);
std::unique_ptr<Phase> makeSquatter(Stage& stage);
std::unique_ptr<Phase> makeSelection(Stage& stage);

}  // namespace orvane::soak
