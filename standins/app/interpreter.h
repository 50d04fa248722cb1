#pragma once

// Runs the lines that a script or a person gives: commands for the plug-in, the application's own
// words, and the checks. Knows nothing of consoles and pipes of its own.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "standins/app/arrivals.h"
#include "standins/app/protocol.h"

namespace orvane::standin::app {

// What the lines need of the program around them.
class Host {
public:
    virtual ~Host() = default;
    virtual bool isConnected(PipeId pipe) = 0;
    // Onto the command pipe, a message or bytes as they are; false when they were not all taken.
    virtual bool send(const OrvaneMessage& message) = 0;
    virtual bool sendBytes(std::span<const std::uint8_t> bytes) = 0;
    virtual void drop(PipeId pipe) = 0;
    virtual void hold(PipeId pipe, bool held) = 0;
    // One or more lines; from any thread.
    virtual void print(const String& text, bool withTime = true) = 0;
};

enum class Outcome {
    done,
    failed,  // an expectation that was not met, a command without an answer
    wrong,   // the line could not be understood; it did nothing
    quit,
};

class Interpreter {
public:
    Interpreter(Host& host, Arrivals& arrivals) : m_host(host), m_arrivals(arrivals) {}

    Outcome run(const String& line);

    // The lines of a script in turn, until the first failure; none when one of them begins with no
    // word that there is. True when every check was met and nothing wrong has come over the pipes.
    bool runScript(const String& text, const String& name);

    // From any thread: something has come that is not as it should be.
    void problemCame() { ++m_problems; }
    [[nodiscard]] bool isGood() const { return m_missed == 0 && m_problems == 0; }

    // For the words.

    Host& host() { return m_host; }
    std::map<String, String>& variables() { return m_variables; }
    [[nodiscard]] const MessagePtr& lastResponse() const { return m_lastResponse; }

    Outcome wrong(const String& why);
    Outcome failed(const String& why);
    Outcome met(const String& what);

    // Sends a command and waits for its response, which is lastResponse() then; null when there is
    // none, and noAnswer() tells why. `byteMs` is the pause after each byte, -1 for all at once.
    MessagePtr ask(const OrvaneCommand& command, int byteMs = -1);
    Outcome askOnce(const OrvaneCommand& command, int byteMs = -1);
    // The same command so many times in one write, and all its responses.
    Outcome askAtOnce(const OrvaneCommand& command, int times);
    [[nodiscard]] const String& noAnswer() const { return m_noAnswer; }
    Outcome sendBytes(std::span<const std::uint8_t> bytes, const String& what);

    Outcome expect(const StringArray& words);
    void beginStep(const String& title);

private:
    // What is missing or wrong with an expectation; an outcome of done when it was met.
    struct Finding {
        Outcome outcome = Outcome::done;
        String text;
    };
    Finding check(StringArray words);
    Finding checkEvent(const StringArray& words, bool wanted, std::chrono::milliseconds within);
    [[nodiscard]] Finding checkValues(const StringArray& words) const;
    Finding checkLink(bool connected, std::chrono::milliseconds within);

    bool awaitResponses(const OrvaneCommand& command, std::size_t place, int times);
    void endStep();

    Host& m_host;
    Arrivals& m_arrivals;
    std::map<String, String> m_variables;
    MessagePtr m_lastResponse;
    String m_noAnswer;
    std::size_t m_eventPlace = 0;  // expectations look at events from here on
    String m_step;
    bool m_stepGood = true;
    String m_where;  // "script.txt:12: " while a script runs
    unsigned m_met = 0;
    unsigned m_missed = 0;
    std::atomic<unsigned> m_problems{0};
};

// KEY=VALUE words as they are; none when one is not of that form.
std::optional<StringPairArray> pairsOf(const StringArray& words);

}  // namespace orvane::standin::app
