// What "expect" and "wait" understand; the rest of the interpreter is in interpreter.cpp.

#include <algorithm>

#include "standins/app/interpreter.h"
#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

using std::chrono::milliseconds;

bool carries(const Message& message, const Parameters& wanted) {
    return std::all_of(wanted.begin(), wanted.end(), [&](const Parameter& parameter) {
        const std::string* value = find(message.parameters, parameter.first);
        return value && matches(parameter.second, *value);
    });
}

std::string inWords(const std::vector<std::string>& words) {
    std::vector<std::string> shown;
    for (const std::string& word : words) shown.push_back(asWord(word, 80));
    return join(shown, " ");
}

// Takes "within MS" off the end.
Parsed<milliseconds> takeWithin(std::vector<std::string>& words) {
    constexpr milliseconds usual{5'000};
    if (words.size() < 2 || words[words.size() - 2] != "within") return {usual, {}};
    const auto limit = parseNumber(words.back());
    if (!limit) return {usual, "'within' takes milliseconds: within 2000"};
    words.resize(words.size() - 2);
    return {milliseconds(*limit), {}};
}

}  // namespace

Interpreter::Finding Interpreter::misunderstood(const std::string& why) {
    return {Outcome::wrong, why + "; 'help expect' tells what can be expected"};
}

Interpreter::Finding Interpreter::missing(const std::string& what) {
    return {Outcome::failed, what};
}

Interpreter::Outcome Interpreter::expect(const Words& words, std::string_view) {
    const Finding finding = check(words);
    if (finding.outcome == Outcome::wrong) return wrong(finding.text);
    if (finding.outcome == Outcome::failed)
        return failed("MISSED: expected " + inWords(words) + ": " + finding.text);
    return met(inWords(words));
}

Interpreter::Outcome Interpreter::wait(const Words& words, std::string_view) {
    const Finding finding = check(words);
    if (finding.outcome == Outcome::wrong) return wrong(finding.text);
    if (finding.outcome == Outcome::failed) note("not seen: " + finding.text);
    return Outcome::done;
}

Interpreter::Finding Interpreter::check(Words words) {
    const auto within = takeWithin(words);
    if (!within) return misunderstood(within.error);
    if (words.empty()) return misunderstood("what is expected?");
    const bool wanted = words.front() != "no";
    if (!wanted) words.erase(words.begin());
    const std::string what = words.empty() ? std::string() : words.front();
    if (!words.empty()) words.erase(words.begin());
    if (what == "event") return checkArrival(words, wanted, Message::Kind::event, within.value);
    if (what == "response")
        return checkArrival(words, wanted, Message::Kind::response, within.value);
    if (!wanted) return misunderstood("'no' goes with event or response");
    if (what == "return") return checkReturn(words);
    if (what == "value") return checkValues(words);
    if (what == "connected" || what == "disconnected")
        return checkLink(what == "connected", within.value);
    if (what == "problem") return checkProblem(join(words, " "), within.value);
    return misunderstood("'" + onOneLine(what, 60) + "' cannot be expected");
}

Interpreter::Finding Interpreter::checkArrival(const Words& words, bool wanted, Message::Kind kind,
                                               milliseconds within) {
    if (words.empty()) return misunderstood("which one? its name comes next");
    const auto parameters = plainParameters(Words(words.begin() + 1, words.end()));
    if (!parameters) return misunderstood(parameters.error);
    std::size_t& place = kind == Message::Kind::event ? m_eventPlace : m_responsePlace;
    const std::size_t from = place;
    const auto came = m_arrivals.waitFor(place, within, [&](const Arrival& arrival) {
        return arrival.what == Arrival::What::message && arrival.message.kind == kind &&
               matches(words.front(), arrival.message.name) &&
               carries(arrival.message, parameters.value);
    });
    if (came && kind == Message::Kind::response) m_lastResponse = came->message;
    if (came.has_value() == wanted) return {};
    if (!wanted) return missing("one came");
    // What came instead is most of the way to the reason.
    std::vector<std::string> others;
    m_arrivals.forEach(from, [&](const Arrival& arrival) {
        if (arrival.what == Arrival::What::message && arrival.message.kind == kind)
            others.push_back(arrival.message.name);
    });
    constexpr std::size_t shownAtMost = 8;
    if (others.size() > shownAtMost) others.erase(others.begin(), others.end() - shownAtMost);
    return missing("not within " + std::to_string(within.count()) +
                   " ms; since the last one came " +
                   (others.empty() ? "nothing" : join(others, ", ")));
}

Interpreter::Finding Interpreter::checkProblem(const std::string& text, milliseconds within) {
    const auto came = m_arrivals.waitFor(m_problemPlace, within, [&](const Arrival& arrival) {
        return arrival.what == Arrival::What::problem &&
               arrival.text.find(text) != std::string::npos;
    });
    return came ? Finding{}
                : missing("no such problem within " + std::to_string(within.count()) + " ms");
}

Interpreter::Finding Interpreter::checkReturn(const Words& words) const {
    if (words.size() != 1 || (words[0] != "true" && words[0] != "false" && words[0] != "none"))
        return misunderstood("'return' goes with true, false or none");
    if (!m_lastResponse) return missing("there is no response");
    const std::string* value = find(m_lastResponse->parameters, "return_value");
    const std::string is = value ? *value : "none";
    return is == words[0] ? Finding{} : missing("it is " + asWord(is, 60));
}

Interpreter::Finding Interpreter::checkValues(const Words& words) const {
    const auto wanted = plainParameters(words);
    if (!wanted) return misunderstood(wanted.error);
    if (wanted.value.empty()) return misunderstood("'value' goes with KEY=VALUE");
    if (!m_lastResponse) return missing("there is no response");
    for (const auto& [key, pattern] : wanted.value) {
        const std::string* value = find(m_lastResponse->parameters, key);
        if (!value) return missing("the response has no " + key);
        if (!matches(pattern, *value)) return missing(key + " is " + asWord(*value));
    }
    return {};
}

Interpreter::Finding Interpreter::checkLink(bool connected, milliseconds within) {
    const auto deadline = std::chrono::steady_clock::now() + within;
    for (;;) {
        // Any change of the link is an arrival; look again after each.
        std::size_t place = m_arrivals.count();
        const bool event = m_link.isConnected(PipeId::event);
        const bool command = m_link.isConnected(PipeId::command);
        if (connected ? event && command : !event && !command) return {};
        const auto left =
            std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return missing(std::string("the event pipe is ") + (event ? "" : "not ") +
                           "connected, the command pipe is " + (command ? "" : "not ") +
                           "connected");
        m_arrivals.waitFor(place, left, [](const Arrival& arrival) {
            return arrival.what == Arrival::What::connected ||
                   arrival.what == Arrival::What::disconnected;
        });
    }
}

}  // namespace orvane::standin::app
