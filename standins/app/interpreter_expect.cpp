// What "expect" understands.

#include "standins/app/interpreter.h"

namespace orvane::standin::app {
namespace {

using std::chrono::milliseconds;

// Each is there and matches; * stands for any text, ? for any character. Else what is missing.
String missingIn(const OrvaneMessage& message, const StringPairArray& wanted) {
    for (const String& key : wanted.getAllKeys()) {
        const auto value = valueIn(message, key);
        if (!value) return "it has no " + key;
        if (!value->matchesWildcard(wanted[key], false)) return key + " is " + asWord(*value);
    }
    return {};
}

String inWords(const StringArray& words) {
    StringArray shown;
    for (const String& word : words) shown.add(asWord(word, 80));
    return shown.joinIntoString(" ");
}

}  // namespace

Outcome Interpreter::expect(const StringArray& words) {
    const Finding finding = check(words);
    if (finding.outcome == Outcome::done) return met(inWords(words));
    if (finding.outcome == Outcome::failed)
        return failed("MISSED: expected " + inWords(words) + ": " + finding.text);
    return wrong(finding.text + "; 'help expect' tells what can be expected");
}

Interpreter::Finding Interpreter::check(StringArray words) {
    milliseconds within{5'000};
    if (words.size() > 1 && words[words.size() - 2] == "within") {
        const auto limit = parseNumber(words[words.size() - 1]);
        if (!limit) return {Outcome::wrong, "'within' takes milliseconds"};
        within = milliseconds(*limit);
        words.removeRange(words.size() - 2, 2);
    }
    const bool wanted = words[0] != "no";
    if (!wanted) words.remove(0);
    const String what = words[0];
    words.remove(0);
    if (what == "event" && !words.isEmpty()) return checkEvent(words, wanted, within);
    if (!wanted) return {Outcome::wrong, "'no' goes with event"};
    if (what == "connected" || what == "disconnected")
        return checkLink(what == "connected", within);
    if (what == "value" && !words.isEmpty()) return checkValues(words);
    if (what == "return" && words.size() == 1) return checkValues({"return_value=" + words[0]});
    return {Outcome::wrong, "'" + onOneLine(what, 60) + "' cannot be expected so"};
}

Interpreter::Finding Interpreter::checkEvent(const StringArray& words, bool wanted,
                                             milliseconds within) {
    StringArray rest = words;
    rest.remove(0);
    const auto values = pairsOf(rest);
    if (!values) return {Outcome::wrong, "after the event's name comes KEY=VALUE"};
    const std::size_t from = m_eventPlace;
    const bool came = m_arrivals.waitUntil(within, [&] {
        return m_arrivals.next(m_eventPlace, [&](const OrvaneMessage& message) {
            return isEvent(message) && message.getName() == words[0] &&
                   missingIn(message, *values).isEmpty();
        }) != nullptr;
    });
    if (came == wanted) return {};
    if (came) return {Outcome::failed, "one came"};
    // What came instead is most of the way to the reason.
    StringArray others;
    std::size_t place = from;
    m_arrivals.next(place, [&](const OrvaneMessage& message) {
        if (isEvent(message)) others.add(onOneLine(message.getName(), 60));
        return false;
    });
    constexpr int shownAtMost = 8;
    others.removeRange(0, others.size() - shownAtMost);
    return {Outcome::failed, "since the last one came " +
                                 (others.isEmpty() ? "nothing" : others.joinIntoString(", "))};
}

Interpreter::Finding Interpreter::checkValues(const StringArray& words) const {
    const auto wanted = pairsOf(words);
    if (!wanted) return {Outcome::wrong, "'value' goes with KEY=VALUE"};
    if (m_lastResponse == nullptr) return {Outcome::failed, "there is no response"};
    const String missing = missingIn(*m_lastResponse, *wanted);
    return missing.isEmpty() ? Finding{} : Finding{Outcome::failed, missing};
}

Interpreter::Finding Interpreter::checkLink(bool connected, milliseconds within) {
    const auto is = [&](PipeId pipe) { return m_host.isConnected(pipe) == connected; };
    if (m_arrivals.waitUntil(within, [&] { return is(PipeId::event) && is(PipeId::command); }))
        return {};
    const PipeId pipe = is(PipeId::event) ? PipeId::command : PipeId::event;
    return {Outcome::failed,
            String("the ") + describe(pipe) + (connected ? " is not connected" : " is connected")};
}

}  // namespace orvane::standin::app
