#include "standins/app/interpreter.h"

#include <thread>

#include "common/messages/frame.h"
#include "standins/app/report_lines.h"
#include "standins/app/words.h"

namespace orvane::standin::app {
namespace {

constexpr std::chrono::seconds kPatience{30};

String firstWord(const String& line) { return line.upToFirstOccurrenceOf(" ", false, false); }

bool isNothing(const String& line) { return line.isEmpty() || line.startsWithChar('#'); }

}  // namespace

std::optional<StringPairArray> pairsOf(const StringArray& words) {
    StringPairArray pairs;
    for (const String& word : words) {
        if (word.indexOfChar('=') <= 0) return std::nullopt;
        pairs.set(word.upToFirstOccurrenceOf("=", false, false),
                  word.fromFirstOccurrenceOf("=", false, false));
    }
    return pairs;
}

Outcome Interpreter::run(const String& typed) {
    String line, rest = typed.trim();
    if (isNothing(rest)) return Outcome::done;
    while (rest.contains("${")) {
        const String from = rest.fromFirstOccurrenceOf("${", false, false);
        const String name = from.upToFirstOccurrenceOf("}", false, false);
        const auto value = m_variables.find(name);
        if (value == m_variables.end())
            return wrong("nobody has set ${" + onOneLine(name, 60) + "}; 'set NAME VALUE' does");
        line << rest.upToFirstOccurrenceOf("${", false, false) << value->second;
        rest = from.fromFirstOccurrenceOf("}", false, false);
    }
    line << rest;

    String problem;
    const Word* const word = findWord(firstWord(line), problem);
    if (word == nullptr) return wrong(problem);
    rest = line.fromFirstOccurrenceOf(" ", false, false).trim();
    const auto words =
        word->takesWholeLine ? std::optional<StringArray>(StringArray(rest)) : splitWords(rest);
    if (!words) return wrong("a quote is not closed; put \" at the value's end");
    if (word->run != nullptr) return word->run(*this, *words);
    OrvaneCommand command(word->name);
    problem = fillCommand(command, *word, *words);
    return problem.isEmpty() ? askOnce(command) : wrong(problem);
}

bool Interpreter::runScript(const String& text, const String& name) {
    const StringArray lines = StringArray::fromLines(text);
    const auto place = [&](int i) { return name + ":" + String(i + 1) + ": "; };
    for (int i = 0; i < lines.size(); ++i) {
        const String line = lines[i].trim();
        String problem;
        m_where = place(i);
        if (!isNothing(line) && findWord(firstWord(line), problem) == nullptr) wrong(problem);
    }
    const bool sound = m_missed == 0;
    for (int i = 0; sound && i < lines.size(); ++i) {
        m_where = place(i);
        if (run(lines[i]) != Outcome::done) break;
    }
    m_where.clear();
    endStep();
    if (m_problems > 0)
        failed(String(m_problems.load()) + " things came that are not as they should be");
    m_host.print(isGood() ? "result: good, all " + String(m_met) + " checks were met"
                          : "result: FAILED, " + String(m_missed) + " of " +
                                String(m_met + m_missed) + " checks were not met");
    return isGood();
}

Outcome Interpreter::wrong(const String& why) {
    failed(why);
    return Outcome::wrong;
}

Outcome Interpreter::failed(const String& why) {
    ++m_missed;
    m_stepGood = false;
    m_host.print("error: " + m_where + why);
    return Outcome::failed;
}

Outcome Interpreter::met(const String& what) {
    ++m_met;
    m_host.print("  seen: " + what);
    return Outcome::done;
}

void Interpreter::beginStep(const String& title) {
    endStep();
    m_step = title;
    m_host.print("step: " + m_step);
}

void Interpreter::endStep() {
    if (m_step.isNotEmpty()) m_host.print((m_stepGood ? "step good: " : "step FAILED: ") + m_step);
    m_step.clear();
    m_stepGood = true;
}

MessagePtr Interpreter::ask(const OrvaneCommand& command, int byteMs) {
    m_lastResponse = nullptr;
    const std::size_t place = m_arrivals.count();
    m_host.print(shown(command) + (byteMs < 0 ? "" : "  byte by byte"));
    bool sent = m_host.isConnected(PipeId::command);
    if (byteMs < 0) {
        sent = sent && m_host.send(command);
    } else {
        for (const std::uint8_t& byte : frame::encode(command.toPayload())) {
            sent = sent && m_host.sendBytes({&byte, 1});
            if (sent) std::this_thread::sleep_for(std::chrono::milliseconds(byteMs));
        }
    }
    if (!sent)
        m_noAnswer = command.getName() + " could not be sent: " +
                     (m_host.isConnected(PipeId::command)
                          ? "the plug-in does not read"
                          : "nobody is connected to the command pipe; 'expect connected' waits");
    else if (awaitResponses(command, place, 1))
        return m_lastResponse;
    return nullptr;
}

Outcome Interpreter::askOnce(const OrvaneCommand& command, int byteMs) {
    return ask(command, byteMs) != nullptr ? Outcome::done : failed(m_noAnswer);
}

Outcome Interpreter::askAtOnce(const OrvaneCommand& command, int times) {
    const auto frame = frame::encode(command.toPayload());
    std::vector<std::uint8_t> frames;
    for (int i = 0; i < times; ++i) frames.insert(frames.end(), frame.begin(), frame.end());
    const std::size_t place = m_arrivals.count();
    const Outcome sent = sendBytes(frames, command.getName() + ", " + String(times) + " times");
    if (sent != Outcome::done) return sent;
    if (!awaitResponses(command, place, times)) return failed(m_noAnswer);
    return met(String(times) + " responses to " + command.getName());
}

// The last of so many responses becomes lastResponse().
bool Interpreter::awaitResponses(const OrvaneCommand& command, std::size_t place, int times) {
    int came = 0;
    bool connected = true;
    m_arrivals.waitUntil(kPatience, [&] {
        connected = m_host.isConnected(PipeId::command);
        while (came < times) {
            const MessagePtr next = m_arrivals.next(place, [&](const OrvaneMessage& message) {
                return message.getTagName() == "response" && message.getName() == command.getName();
            });
            if (next == nullptr) return !connected;
            m_lastResponse = next;
            ++came;
        }
        return true;
    });
    if (came == times) return true;
    m_noAnswer = (connected ? "no response to " : "the plug-in disconnected before it answered ") +
                 command.getName();
    return false;
}

Outcome Interpreter::sendBytes(std::span<const std::uint8_t> bytes, const String& what) {
    m_host.print(shownLine("sent", what, String(bytes.size()) + " bytes"));
    return m_host.sendBytes(bytes) ? Outcome::done : failed(what + " could not be sent");
}

}  // namespace orvane::standin::app
