#include "standins/app/interpreter.h"

#include <algorithm>
#include <thread>

#include "standins/app/clean_library.h"
#include "standins/app/frame_scanner.h"
#include "standins/app/protocol.h"
#include "standins/app/report_lines.h"
#include "standins/app/text.h"

namespace orvane::standin::app {
Interpreter::Interpreter(Link& link, Arrivals& arrivals, Output& output)
    : m_link(link), m_arrivals(arrivals), m_output(output) {}

const std::map<std::string, Interpreter::Handler, std::less<>>& Interpreter::handlers() {
    static const std::map<std::string, Handler, std::less<>> table = {
        {"help", &Interpreter::help},
        {"list", &Interpreter::list},
        {"status", &Interpreter::status},
        {"states", &Interpreter::states},
        {"clean-library", &Interpreter::clean},
        {"send", &Interpreter::sendUnchecked},
        {"raw", &Interpreter::raw},
        {"xml", &Interpreter::xml},
        {"badmagic", &Interpreter::badMagic},
        {"badlength", &Interpreter::badLength},
        {"cut", &Interpreter::cut},
        {"slow", &Interpreter::slow},
        {"burst", &Interpreter::burst},
        {"drop", &Interpreter::drop},
        {"hold", &Interpreter::hold},
        {"resume", &Interpreter::resume},
        {"expect", &Interpreter::expect},
        {"wait", &Interpreter::wait},
        {"sleep", &Interpreter::sleep},
        {"set", &Interpreter::setVariable},
        {"keep", &Interpreter::keep},
        {"patience", &Interpreter::patience},
        {"step", &Interpreter::step},
        {"say", &Interpreter::say},
        {"on-failure", &Interpreter::onFailure},
        {"quit", &Interpreter::quit},
    };
    return table;
}

Interpreter::Outcome Interpreter::run(std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.front() == '#') return Outcome::done;
    const auto replaced = substitute(line, m_variables);
    if (!replaced) return wrong(replaced.error);
    // The name stands alone at the front; what follows may be a text with single quotes and such.
    const std::string& whole = replaced.value;
    const auto nameEnd = std::min(whole.find_first_of(" \t"), whole.size());
    const std::string_view name = std::string_view(whole).substr(0, nameEnd);
    const std::string_view rest = trimmed(std::string_view(whole).substr(nameEnd));

    const bool question = name == "?" || name == "exit";
    const Lookup lookup = findCommand(name == "?" ? "help" : question ? "quit" : name);
    if (!lookup.command) return wrong(lookupProblem(name, lookup));
    const bool freeText =
        std::string_view(lookup.command->name) == "say" ||
        std::string_view(lookup.command->name) == "step" ||
        (std::string_view(lookup.command->name) == "xml" && rest.substr(0, 1) == "<");
    Words words;
    if (!freeText) {
        auto split = splitWords(rest);
        if (!split) return wrong(split.error);
        words = std::move(split.value);
    }
    if (lookup.command->sent) return sendCommand(*lookup.command, words);
    return (this->*handlers().at(lookup.command->name))(words, rest);
}

bool Interpreter::runScript(std::string_view text, const std::string& name) {
    std::vector<std::string> lines = split(text, '\n');
    if (!lines.empty() && lines.front().substr(0, 3) == "\xEF\xBB\xBF") lines.front().erase(0, 3);
    bool sound = true;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view line = trimmed(lines[i]);
        if (line.empty() || line.front() == '#') continue;
        const std::string_view typed = line.substr(0, line.find_first_of(" \t"));
        const Lookup lookup = findCommand(typed);
        if (lookup.command) continue;
        m_where = name + ":" + std::to_string(i + 1) + ": ";
        wrong(lookupProblem(typed, lookup));
        sound = false;
    }
    m_where.clear();
    if (!sound) {
        m_output.print(Output::Kind::error,
                       "nothing of the script was run; mend these lines first");
        ++m_missed;
        return false;
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        m_where = name + ":" + std::to_string(i + 1) + ": ";
        const Outcome outcome = run(lines[i]);
        if (outcome == Outcome::quit) break;
        if (outcome == Outcome::wrong) ++m_missed;
        if (outcome == Outcome::done) continue;
        m_stepGood = false;
        if (m_stopAtFailure) break;
    }
    endStep();
    m_where.clear();
    const unsigned all = m_met + m_missed;
    m_output.print(Output::Kind::check,
                   m_missed == 0 ? "result: good, all " + std::to_string(all) + " checks were met"
                                 : "result: FAILED, " + std::to_string(m_missed) + " of " +
                                       std::to_string(all) + " checks were not met");
    return m_missed == 0;
}

Interpreter::Outcome Interpreter::wrong(const std::string& why) {
    m_output.print(Output::Kind::error, m_where + why);
    return Outcome::wrong;
}

Interpreter::Outcome Interpreter::met(const std::string& what) {
    ++m_met;
    m_output.print(Output::Kind::check, "  seen: " + what);
    return Outcome::done;
}

Interpreter::Outcome Interpreter::failed(const std::string& why) {
    ++m_missed;
    m_stepGood = false;
    m_output.print(Output::Kind::error, m_where + why);
    return Outcome::failed;
}

void Interpreter::note(const std::string& text) { m_output.print(Output::Kind::answer, text); }

std::optional<Message> Interpreter::ask(const std::string& name, const Parameters& parameters) {
    m_lastResponse.reset();
    m_whyNoAnswer = kConnectHint;
    if (!m_link.isConnected(PipeId::command)) return {};
    std::size_t place = m_arrivals.count();
    m_output.print(Output::Kind::traffic, shownCommand(name, parameters));
    const std::string error =
        m_link.send(PipeId::command, frameAround(commandPayload(name, parameters)));
    if (!error.empty()) {
        m_whyNoAnswer = name + " could not be sent: " + error;
        return {};
    }
    const auto came = m_arrivals.waitFor(place, m_patience, [](const Arrival& arrival) {
        return arrival.pipe == PipeId::command &&
               (arrival.what == Arrival::What::disconnected ||
                (arrival.what == Arrival::What::message &&
                 arrival.message.kind == Message::Kind::response));
    });
    if (!came) {
        m_whyNoAnswer = "no response to " + name + " within " + std::to_string(m_patience.count()) +
                        " ms; one that still comes is shown ('patience MS' waits longer)";
        return {};
    }
    if (came->what == Arrival::What::disconnected) {
        m_whyNoAnswer = "the plug-in disconnected before it answered " + name;
        return {};
    }
    m_responsePlace = place;
    if (came->message.name != name)
        m_output.print(Output::Kind::alert, "PROBLEM   the response is to '" +
                                                onOneLine(came->message.name, 60) + "', but '" +
                                                name + "' was asked");
    m_lastResponse = came->message;
    return m_lastResponse;
}

Interpreter::Outcome Interpreter::sendCommand(const CommandForm& command, const Words& words) {
    const auto parameters = commandParameters(command, words);
    if (!parameters) return wrong(parameters.error);
    return ask(command.name, parameters.value) ? Outcome::done : failed(m_whyNoAnswer);
}

Interpreter::Outcome Interpreter::sendUnchecked(const Words& words, std::string_view) {
    if (words.empty()) return wrong("send what? send NAME [KEY=VALUE]...");
    const auto parameters = plainParameters(Words(words.begin() + 1, words.end()));
    if (!parameters) return wrong(parameters.error);
    return ask(words[0], parameters.value) ? Outcome::done : failed(m_whyNoAnswer);
}

Interpreter::Outcome Interpreter::help(const Words& words, std::string_view) {
    if (words.empty()) {
        note(helpOverview());
        return Outcome::done;
    }
    const Lookup lookup = findCommand(words[0]);
    if (!lookup.command) return wrong(lookupProblem(words[0], lookup));
    note(helpFor(*lookup.command));
    return Outcome::done;
}

Interpreter::Outcome Interpreter::list(const Words& words, std::string_view) {
    std::string names;
    for (const CommandForm& command : commandCatalogue())
        if (command.sent && (words.empty() || startsWithIgnoringCase(command.name, words[0])))
            names += (names.empty() ? "" : "\n") + std::string(command.name);
    note(names.empty() ? "no command begins with that; 'list' alone gives all" : names);
    return Outcome::done;
}

Interpreter::Outcome Interpreter::status(const Words&, std::string_view) {
    for (const PipeId pipe : {PipeId::event, PipeId::command})
        note(fitted(describe(pipe), 14) +
             (m_link.isConnected(pipe) ? "connected" : "nobody is connected"));
    std::size_t events = 0, responses = 0, problems = 0;
    m_arrivals.forEach(0, [&](const Arrival& arrival) {
        if (arrival.what == Arrival::What::problem) ++problems;
        if (arrival.what != Arrival::What::message) return;
        ++(arrival.message.kind == Message::Kind::response ? responses : events);
    });
    note(std::to_string(events) + " events, " + std::to_string(responses) + " responses, " +
         std::to_string(problems) + " problems so far");
    return Outcome::done;
}

Interpreter::Outcome Interpreter::states(const Words&, std::string_view) {
    std::string line;
    for (const char* question : {"isPlaying", "isPaused", "isShufflePlay", "isRepeatTrack",
                                 "isRepeatAll", "isInSpecialMode", "supportsRandomTrackAccess"}) {
        const auto response = ask(question, {});
        if (!response) return failed(m_whyNoAnswer);
        line += (line.empty() ? "" : "  ") + std::string(question) + "=" +
                asWord(valueOf(response->parameters, "return_value"));
    }
    m_output.print(Output::Kind::check, "states: " + line);
    return Outcome::done;
}

Interpreter::Outcome Interpreter::clean(const Words& words, std::string_view) {
    Parameters given;
    for (const std::string& word : words) {
        const auto equals = word.find('=');
        const std::string name = word.substr(0, equals);
        if (equals == std::string::npos ||
            (name != "--cover" && name != "--out" && name != "--playlist"))
            return wrong(
                "clean-library takes --cover=FILE|FOLDER, --out=REPORT and "
                "--playlist=NAME, not '" +
                onOneLine(word, 60) + "'");
        set(given, name, word.substr(equals + 1));
    }
    CleanOptions options;
    options.cover = pathFrom(valueOf(given, "--cover"));
    options.report = pathFrom(valueOf(given, "--out"));
    options.playlistName = valueOf(given, "--playlist");

    const CleanResult result = cleanLibrary(
        options, [this](const std::string& name, const Parameters& p) { return ask(name, p); },
        [this](const std::string& line) { m_output.print(Output::Kind::check, line); });
    if (!result.error.empty()) return failed(result.error);
    const std::size_t troubled = result.troubled();
    const std::string summary = "clean-library: " + std::to_string(result.tracks.size()) +
                                " tracks, " + std::to_string(troubled) + " with problems";
    if (troubled > 0) return failed(summary);
    return met(summary);
}

Interpreter::Outcome Interpreter::sleep(const Words& words, std::string_view) {
    const auto time = words.size() == 1 ? parseNumber(words[0]) : std::optional<unsigned>();
    if (!time) return wrong("sleep takes milliseconds: sleep 500");
    std::this_thread::sleep_for(std::chrono::milliseconds(*time));
    return Outcome::done;
}

Interpreter::Outcome Interpreter::setVariable(const Words& words, std::string_view) {
    if (words.size() != 2) return wrong("set takes a name and a value: set track \"C:\\a b.wma\"");
    m_variables[words[0]] = words[1];
    return Outcome::done;
}

Interpreter::Outcome Interpreter::keep(const Words& words, std::string_view) {
    if (words.size() != 2)
        return wrong(
            "keep takes a name and a key of the last response: keep track "
            "metadataOut.Filename");
    const std::string* value =
        m_lastResponse ? find(m_lastResponse->parameters, words[1]) : nullptr;
    if (!value) return failed("the last response has no " + words[1] + " to keep");
    m_variables[words[0]] = *value;
    return Outcome::done;
}

Interpreter::Outcome Interpreter::patience(const Words& words, std::string_view) {
    const auto time = words.size() == 1 ? parseNumber(words[0]) : std::optional<unsigned>();
    if (!time) return wrong("patience takes milliseconds: patience 5000");
    m_patience = std::chrono::milliseconds(*time);
    return Outcome::done;
}

Interpreter::Outcome Interpreter::say(const Words&, std::string_view rest) {
    m_output.print(Output::Kind::check, std::string(rest));
    return Outcome::done;
}

Interpreter::Outcome Interpreter::onFailure(const Words& words, std::string_view) {
    if (words.size() != 1 || (words[0] != "stop" && words[0] != "continue"))
        return wrong("on-failure takes stop or continue");
    m_stopAtFailure = words[0] == "stop";
    return Outcome::done;
}

Interpreter::Outcome Interpreter::quit(const Words&, std::string_view) { return Outcome::quit; }

Interpreter::Outcome Interpreter::step(const Words&, std::string_view rest) {
    if (rest.empty()) return wrong("step takes a title");
    endStep();
    m_step = std::string(rest);
    m_output.print(Output::Kind::check, "step: " + m_step);
    return Outcome::done;
}

void Interpreter::endStep() {
    if (!m_step.empty())
        m_output.print(Output::Kind::check,
                       std::string(m_stepGood ? "step good: " : "step FAILED: ") + m_step);
    m_step.clear();
    m_stepGood = true;
}

}  // namespace orvane::standin::app
