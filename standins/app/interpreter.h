#pragma once

// Runs the lines that a script or a person gives: the protocol's commands, the application's own,
// and the checks. Knows nothing of consoles, pipes or files of its own.

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standins/app/arrivals.h"
#include "standins/app/command_text.h"

namespace orvane::standin::app {

// The two pipes, as far as the lines need them.
class Link {
public:
    virtual ~Link() = default;
    virtual bool isConnected(PipeId pipe) = 0;
    // Writes bytes as they are; "" or what went wrong.
    virtual std::string send(PipeId pipe, std::string_view bytes) = 0;
    virtual void drop(PipeId pipe) = 0;
    virtual void hold(PipeId pipe, bool held) = 0;
};

// What a line has to say, by kind, so that --quiet can leave some of it out.
class Output {
public:
    enum class Kind {
        traffic,  // commands, events, responses: with the time
        alert,    // something is wrong on the wire: with the time
        answer,   // what a person asked for
        check,    // expectations and their outcome
        error,    // a line that could not be run
    };
    virtual ~Output() = default;
    virtual void print(Kind kind, const std::string& text) = 0;
};

// What to do when there is nobody to send to.
inline constexpr const char* kConnectHint =
    "nobody is connected to the command pipe; start the player with the plug-in "
    "('wait connected within 10000' waits for it)";

class Interpreter {
public:
    enum class Outcome {
        done,
        failed,  // an expectation that was not met, a command without an answer
        wrong,   // the line could not be understood; it did nothing
        quit,
    };

    Interpreter(Link& link, Arrivals& arrivals, Output& output);

    Outcome run(std::string_view line);

    // All lines of a script in turn; stops at the first failure unless the script says otherwise.
    // Names and quotes of all lines are checked before the first one runs. True when every
    // expectation was met.
    bool runScript(std::string_view text, const std::string& name);

    [[nodiscard]] unsigned checksMissed() const { return m_missed; }

private:
    using Words = std::vector<std::string>;
    using Handler = Outcome (Interpreter::*)(const Words& words, std::string_view rest);

    static const std::map<std::string, Handler, std::less<>>& handlers();

    Outcome sendCommand(const CommandForm& command, const Words& words);
    Outcome help(const Words& words, std::string_view rest);
    Outcome list(const Words& words, std::string_view rest);
    Outcome status(const Words& words, std::string_view rest);
    Outcome states(const Words& words, std::string_view rest);
    Outcome clean(const Words& words, std::string_view rest);
    Outcome sendUnchecked(const Words& words, std::string_view rest);
    Outcome raw(const Words& words, std::string_view rest);
    Outcome xml(const Words& words, std::string_view rest);
    Outcome badMagic(const Words& words, std::string_view rest);
    Outcome badLength(const Words& words, std::string_view rest);
    Outcome cut(const Words& words, std::string_view rest);
    Outcome slow(const Words& words, std::string_view rest);
    Outcome burst(const Words& words, std::string_view rest);
    Outcome drop(const Words& words, std::string_view rest);
    Outcome hold(const Words& words, std::string_view rest);
    Outcome resume(const Words& words, std::string_view rest);
    Outcome expect(const Words& words, std::string_view rest);
    Outcome wait(const Words& words, std::string_view rest);
    Outcome sleep(const Words& words, std::string_view rest);
    Outcome setVariable(const Words& words, std::string_view rest);
    Outcome keep(const Words& words, std::string_view rest);
    Outcome patience(const Words& words, std::string_view rest);
    Outcome step(const Words& words, std::string_view rest);
    Outcome say(const Words& words, std::string_view rest);
    Outcome onFailure(const Words& words, std::string_view rest);
    Outcome quit(const Words& words, std::string_view rest);

    Outcome wrong(const std::string& why);
    Outcome met(const std::string& what);
    Outcome failed(const std::string& why);
    void note(const std::string& text);

    // None: m_whyNoAnswer tells why.
    std::optional<Message> ask(const std::string& name, const Parameters& parameters);
    Outcome sendBytes(std::string_view bytes, const std::string& what);
    // The frame of the command that the words spell; a "getTrackCount" when there are none.
    Parsed<std::string> payloadOf(const Words& words, std::size_t from);
    Parsed<std::vector<PipeId>> pipesNamed(const Words& words);

    // One expectation, run: done when it was met, failed with what was missing, or wrong.
    struct Finding {
        Outcome outcome = Outcome::done;
        std::string text;
    };
    Finding check(Words words);
    Finding checkArrival(const Words& words, bool wanted, Message::Kind kind,
                         std::chrono::milliseconds within);
    Finding checkProblem(const std::string& text, std::chrono::milliseconds within);
    Finding checkReturn(const Words& words) const;
    Finding checkValues(const Words& words) const;
    Finding checkLink(bool connected, std::chrono::milliseconds within);
    static Finding misunderstood(const std::string& why);
    static Finding missing(const std::string& what);
    void endStep();

    Link& m_link;
    Arrivals& m_arrivals;
    Output& m_output;
    std::map<std::string, std::string, std::less<>> m_variables;
    std::optional<Message> m_lastResponse;
    std::string m_whyNoAnswer;
    std::size_t m_eventPlace = 0;  // expectations look at events from here on
    std::size_t m_responsePlace = 0;
    std::size_t m_problemPlace = 0;
    std::chrono::milliseconds m_patience{30'000};
    bool m_stopAtFailure = true;
    std::string m_step;
    bool m_stepGood = true;
    std::string m_where;  // "script.txt:12: " while a script runs
    unsigned m_met = 0;
    unsigned m_missed = 0;
};

}  // namespace orvane::standin::app
