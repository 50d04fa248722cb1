#pragma once

// What one kind of misfortune is made of, and the application that all of them need.

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "harness/child.h"
#include "harness/waiting.h"
#include "soak/host.h"
#include "soak/shared_counts.h"

namespace orvane::soak {

// In plain words: what should not have happened.
class Broken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Stage {
    Host& host;
    SharedCounts& counts;
    std::wstring countsName;
};

// This program in another mode, as its own process.
class OtherMode : public test::Child {
public:
    // `arguments` are the mode and what it needs.
    explicit OtherMode(const std::wstring& arguments);
};

// The application's process.
class AppProcess {
public:
    explicit AppProcess(Stage& stage) : m_stage(stage) {}

    void start(bool deaf = false);
    void kill() { m_process.reset(); }
    // For a plug-in to take; the player is used meanwhile. Throws when they do not come.
    void waitForPipes();

private:
    Stage& m_stage;
    std::optional<OtherMode> m_process;
};

// The player is used meanwhile. Throws when the pipes are not made within 15 s.
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
    // Leaves nothing of begin(): no object, no process, the module loaded.
    virtual void end() = 0;
    // For the table; empty: nothing to add.
    [[nodiscard]] virtual std::string note() const { return {}; }

    const char* const name;
    const double share;    // of the whole time
    const unsigned least;  // rounds
    // One write may take 2 s; the rest is for a machine that is busy with a dozen processes.
    double blockLimitMs = 3000;
    double handlesPerRound = 0;  // that are not the plug-in's
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
