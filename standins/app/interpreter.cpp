#include "standins/app/interpreter.h"

#include <thread>

#include "common/messages/frame.h"
#include "standins/app/report_lines.h"
#include "standins/app/words.h"

namespace orvane::standin::app {
namespace {

constexpr std::chrono::seconds kPatience{30};

bool isNothing(const String& line) { return line.isEmpty() || line.startsWithChar('#'); }

}  // namespace

Halves split(const String& text, const char* separator) {
    return {text.upToFirstOccurrenceOf(separator, false, false),
            text.fromFirstOccurrenceOf(separator, false, false)};
}

StringPairArray pairsOf(const StringArray& words, const char* usage) {
    StringPairArray pairs;
    for (const String& word : words) {
        if (word.indexOfChar('=') <= 0) throw Failure{usage};
        const auto [key, value] = split(word, "=");
        pairs.set(key, value);
    }
    return pairs;
}

bool Interpreter::run(const String& line) {
    try {
        if (!isNothing(line.trim())) runOrThrow(line.trim());
        return true;
    } catch (const Failure& failure) {
        failed(failure.why);
        return false;
    }
}

void Interpreter::runOrThrow(const String& typed) {
    String line, rest = typed;
    while (rest.contains("${")) {
        const auto [before, from] = split(rest, "${");
        const auto [name, after] = split(from, "}");
        const auto value = m_variables.find(name);
        if (value == m_variables.end())
            throw Failure{"nobody has set ${" + onOneLine(name, 60) + "}; 'set NAME VALUE' does"};
        line << before << value->second;
        rest = after;
    }
    const auto [first, text] = split(line + rest, " ");
    const Word& word = findWord(first);
    const auto words =
        word.takesWholeLine ? std::optional(StringArray(text.trim())) : splitWords(text);
    if (!words) throw Failure{"a quote is not closed; put \" at the value's end"};
    if (word.run != nullptr)
        word.run(*this, *words);
    else
        ask(commandFrom(word, *words));
}

bool Interpreter::runScript(const String& text, const String& name) {
    const StringArray lines = StringArray::fromLines(text);
    const auto forEachLine = [&](const auto& isGoodLine) {
        for (int i = 0; i < lines.size(); ++i) {
            m_where = name + ":" + String(i + 1) + ": ";
            if (!isGoodLine(lines[i].trim())) return;
        }
    };
    forEachLine([&](const String& line) {
        try {
            if (!isNothing(line)) findWord(split(line, " ").first);
        } catch (const Failure& failure) {
            failed(failure.why);
        }
        return true;
    });
    if (m_missed == 0) forEachLine([&](const String& line) { return run(line) && !m_quit; });
    m_where.clear();
    endStep();
    if (m_problems > 0)
        failed(String(m_problems.load()) + " things came that are not as they should be");
    m_host.print(isGood() ? "result: good, all " + String(m_met) + " checks were met"
                          : "result: FAILED, " + String(m_missed) + " of " +
                                String(m_met + m_missed) + " checks were not met");
    return isGood();
}

void Interpreter::failed(const String& why) {
    ++m_missed;
    m_stepGood = false;
    m_host.print("error: " + m_where + why);
}

void Interpreter::met(const String& what) {
    ++m_met;
    m_host.print("  seen: " + what);
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
        throw Failure{command.getName() + " could not be sent: " +
                      (m_host.isConnected(PipeId::command)
                           ? "the plug-in does not read"
                           : "nobody is connected to the command pipe; 'expect connected' waits")};
    awaitResponses(command, place, 1);
    return m_lastResponse;
}

void Interpreter::askAtOnce(const OrvaneCommand& command, int times) {
    const auto frame = frame::encode(command.toPayload());
    std::vector<std::uint8_t> frames;
    for (int i = 0; i < times; ++i) frames.insert(frames.end(), frame.begin(), frame.end());
    const std::size_t place = m_arrivals.count();
    sendBytes(frames, command.getName() + ", " + String(times) + " times");
    awaitResponses(command, place, times);
    met(String(times) + " responses to " + command.getName());
}

// The last of so many responses becomes lastResponse().
void Interpreter::awaitResponses(const OrvaneCommand& command, std::size_t place, int times) {
    int came = 0;
    bool connected = true;
    m_arrivals.waitUntil(kPatience, [&] {
        connected = m_host.isConnected(PipeId::command);
        for (; came < times; ++came) {
            const MessagePtr next = m_arrivals.next(place, [&](const OrvaneMessage& message) {
                return message.getTagName() == "response" && message.getName() == command.getName();
            });
            if (next == nullptr) return !connected;
            m_lastResponse = next;
        }
        return true;
    });
    if (came < times)
        throw Failure{
            (connected ? "no response to " : "the plug-in disconnected before it answered ") +
            command.getName()};
}

void Interpreter::sendBytes(std::span<const std::uint8_t> bytes, const String& what) {
    m_host.print(shownLine("sent", what, String(bytes.size()) + " bytes"));
    if (!m_host.sendBytes(bytes)) throw Failure{what + " could not be sent"};
}

}  // namespace orvane::standin::app
