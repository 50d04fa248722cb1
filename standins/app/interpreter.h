#pragma once

// Runs the lines that a script or a person gives: commands for the plug-in, the application's own
// words, and the checks. Knows nothing of consoles and pipes of its own.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <span>

#include "standins/app/arrivals.h"
#include "standins/app/protocol.h"

namespace orvane::standin::app {

// What the interpreter needs of the program around it.
class InterpreterHost {
public:
    virtual ~InterpreterHost() = default;
    virtual bool isConnected(PipeId pipe) = 0;
    // Onto the command pipe, a message or bytes as they are; false when they were not all taken.
    virtual bool send(const OrvaneMessage& message) = 0;
    virtual bool sendBytes(std::span<const std::uint8_t> bytes) = 0;
    virtual void drop(PipeId pipe) = 0;
    virtual void hold(PipeId pipe, bool held) = 0;
    // One or more lines; from any thread.
    virtual void print(const String& text, bool withTime = true) = 0;
};

// Why a line failed: it could not be understood, an expectation was not met, or a command got no
// response. Words throw it; Interpreter::run catches it.
struct Failure {
    String why;
};

class Interpreter {
public:
    Interpreter(InterpreterHost& host, Arrivals& arrivals) : m_host(host), m_arrivals(arrivals) {}

    // False when the line failed; the reason is printed then. hasQuit() from "quit" on.
    bool run(const String& line);
    [[nodiscard]] bool hasQuit() const { return m_quit; }

    // Runs the lines of a script in turn, up to the first failure; none when one of them begins
    // with an unknown word. True when every check was met and nothing wrong came over the pipes.
    bool runScript(const String& text, const String& name);

    // From any thread: something has come that is not as it should be.
    void problemCame() { ++m_problems; }
    [[nodiscard]] bool isGood() const { return m_missed == 0 && m_problems == 0; }

    // For the words.

    InterpreterHost& host() { return m_host; }
    std::map<String, String>& variables() { return m_variables; }
    [[nodiscard]] const MessagePtr& lastResponse() const { return m_lastResponse; }
    void quit() { m_quit = true; }
    void met(const String& what);

    // Sends a command and waits for its response, which is lastResponse() then. `byteMs` is the
    // pause after each byte, -1 for all at once.
    MessagePtr ask(const OrvaneCommand& command, int byteMs = -1);
    // The same command so many times in one write, and all its responses.
    void askAtOnce(const OrvaneCommand& command, int times);
    void sendBytes(std::span<const std::uint8_t> bytes, const String& what);

    void expect(StringArray words);
    void beginStep(const String& title);

private:
    void runOrThrow(const String& line);
    void check(StringArray words);
    void checkEvent(StringArray words, bool wanted, std::chrono::milliseconds within);
    void checkValues(const StringArray& words) const;
    void checkLink(bool connected, std::chrono::milliseconds within);

    void failed(const String& why);
    void awaitResponses(const OrvaneCommand& command, std::size_t place, int times);
    void endStep();

    InterpreterHost& m_host;
    Arrivals& m_arrivals;
    std::map<String, String> m_variables;
    MessagePtr m_lastResponse;
    std::size_t m_eventPlace = 0;  // expectations look at events from here on
    String m_step;
    bool m_stepGood = true;
    bool m_quit = false;
    String m_where;  // "script.txt:12: " while a script runs
    unsigned m_met = 0;
    unsigned m_missed = 0;
    std::atomic<unsigned> m_problems{0};
};

// The text before the first `separator`, or all of it, and the text behind.
struct Halves {
    String first, rest;
};
Halves split(const String& text, const char* separator);

// KEY=VALUE words as they are; throws `usage` as a Failure when one is not of that form.
StringPairArray pairsOf(const StringArray& words, const char* usage);

}  // namespace orvane::standin::app
