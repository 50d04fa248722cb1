// What "expect" understands.

#include "standins/app/interpreter.h"

namespace orvane::standin::app {
namespace {

using std::chrono::milliseconds;

// An expectation that was understood and not met.
struct Missed {
    String why;
};

// What is missing in the message or has another value, "" when nothing is; * stands for any text, ?
// for any character.
String missingIn(const OrvaneMessage& message, const StringPairArray& wanted) {
    for (const String& key : wanted.getAllKeys()) {
        const auto value = valueIn(message, key);
        if (!value) return "it has no " + key;
        if (!value->matchesWildcard(wanted[key], false)) return key + " is " + asWord(*value);
    }
    return {};
}

}  // namespace

void Interpreter::expect(StringArray words) {
    StringArray shown;
    for (const String& word : words) shown.add(asWord(word, 80));
    const String expected = shown.joinIntoString(" ");
    try {
        check(std::move(words));
    } catch (const Missed& missed) {
        throw Failure{"MISSED: expected " + expected + ": " + missed.why};
    } catch (const Failure& failure) {
        throw Failure{failure.why + "; 'help expect' tells what can be expected"};
    }
    met(expected);
}

void Interpreter::check(StringArray words) {
    milliseconds within{5'000};
    if (words.size() > 1 && words[words.size() - 2] == "within") {
        const auto limit = parseNumber(words[words.size() - 1]);
        if (!limit) throw Failure{"'within' takes milliseconds"};
        within = milliseconds(*limit);
        words.removeRange(words.size() - 2, 2);
    }
    const bool wanted = words[0] != "no";
    if (!wanted) words.remove(0);
    const String what = words[0];
    words.remove(0);
    if (what == "event" && !words.isEmpty())
        checkEvent(words, wanted, within);
    else if (!wanted)
        throw Failure{"'no' goes with event"};
    else if (what == "connected" || what == "disconnected")
        checkLink(what == "connected", within);
    else if (what == "value" && !words.isEmpty())
        checkValues(words);
    else if (what == "return" && words.size() == 1)
        checkValues({"return_value=" + words[0]});
    else
        throw Failure{"'" + onOneLine(what, 60) + "' cannot be expected so"};
}

void Interpreter::checkEvent(StringArray words, bool wanted, milliseconds within) {
    const String name = words[0];
    words.remove(0);
    const auto values = pairsOf(words, "after the event's name comes KEY=VALUE");
    std::size_t place = m_eventPlace;
    const bool came = m_arrivals.waitUntil(within, [&] {
        return m_arrivals.next(m_eventPlace, [&](const OrvaneMessage& message) {
            return isEvent(message) && message.getName() == name &&
                   missingIn(message, values).isEmpty();
        }) != nullptr;
    });
    if (came == wanted) return;
    if (came) throw Missed{"one came"};
    // The events that came instead often show the reason.
    constexpr int shownAtMost = 8;
    StringArray others;
    m_arrivals.next(place, [&](const OrvaneMessage& message) {
        if (isEvent(message)) others.add(onOneLine(message.getName(), 60));
        return false;
    });
    others.removeRange(0, others.size() - shownAtMost);
    throw Missed{"since the last one came " +
                 (others.isEmpty() ? "nothing" : others.joinIntoString(", "))};
}

void Interpreter::checkValues(const StringArray& words) const {
    const auto wanted = pairsOf(words, "'value' goes with KEY=VALUE");
    if (m_lastResponse == nullptr) throw Missed{"there is no response"};
    const String missing = missingIn(*m_lastResponse, wanted);
    if (missing.isNotEmpty()) throw Missed{missing};
}

void Interpreter::checkLink(bool connected, milliseconds within) {
    const auto is = [&](PipeId pipe) { return m_host.isConnected(pipe) == connected; };
    if (m_arrivals.waitUntil(within, [&] { return is(PipeId::event) && is(PipeId::command); }))
        return;
    const PipeId pipe = is(PipeId::event) ? PipeId::command : PipeId::event;
    throw Missed{String("the ") + describe(pipe) +
                 (connected ? " is not connected" : " is connected")};
}

}  // namespace orvane::standin::app
