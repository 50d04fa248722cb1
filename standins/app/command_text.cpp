#include "standins/app/command_text.h"

#include "standins/app/text.h"

#include <algorithm>

namespace orvane::standin::app {
namespace {

using Kind = ParameterSpec::Kind;

bool isKey(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '.' || c == '-';
    });
}

const ParameterSpec* specOf(const CommandSpec& command, std::string_view key) {
    for (const ParameterSpec& spec : command.parameters)
        if (sameIgnoringCase(spec.name, key)) return &spec;
    return nullptr;
}

// Which parameter a key belongs to, and the key as it is sent.
struct Target {
    const ParameterSpec* spec = nullptr;
    std::string key;
};

Target targetOf(const CommandSpec& command, std::string_view key) {
    if (const ParameterSpec* spec = specOf(command, key))
        return spec->kind == Kind::map ? Target{} : Target{spec, spec->name};
    for (const ParameterSpec& spec : command.parameters) {
        const std::string_view name = spec.name;
        if (!startsWithIgnoringCase(key, name) || key.size() == name.size()) {
            if (spec.kind != Kind::map) continue;
            for (const char* field : metadataFields())
                if (sameIgnoringCase(field, key)) return {&spec, std::string(name) + '.' + field};
            continue;
        }
        const std::string_view rest = key.substr(name.size());
        if (spec.kind == Kind::map && rest.size() > 1 && rest[0] == '.')
            return {&spec, std::string(name) + std::string(rest)};
        if (spec.kind == Kind::list && parseNumber(rest))
            return {&spec, std::string(name) + std::string(rest)};
    }
    return {};
}

std::string unknownKey(const CommandSpec& command, std::string_view key) {
    std::vector<std::string> names;
    for (const ParameterSpec& spec : command.parameters)
        names.emplace_back(spec.kind == Kind::map ? std::string(spec.name) + ".FIELD" : spec.name);
    std::string text = std::string(command.name) + " has no parameter '" + onOneLine(key, 60) + "'";
    text += names.empty() ? "; it takes none" : "; it takes " + join(names, ", ");
    return text + " ('send' sends anything unchecked)";
}

std::string valueProblem(const ParameterSpec& spec, std::string_view value) {
    if (spec.kind == Kind::number && !parseNumber(value))
        return std::string(spec.name) + " must be a number from 0, not '" + onOneLine(value, 60) +
               "'";
    if (spec.kind == Kind::yesNo && !sameIgnoringCase(value, "yes") &&
        !sameIgnoringCase(value, "no"))
        return std::string(spec.name) + " must be yes or no, not '" + onOneLine(value, 60) + "'";
    return {};
}

}  // namespace

Parsed<std::vector<std::string>> splitWords(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false, inQuotes = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && inQuotes && i + 1 < line.size() && line[i + 1] == '"') {
            word += '"';
            ++i;
        } else if (c == '"') {
            inQuotes = !inQuotes;
            inWord = true;
        } else if (!inQuotes && (c == ' ' || c == '\t' || c == '\r' || c == '\n')) {
            if (inWord) words.push_back(std::exchange(word, {}));
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inQuotes) return {{}, "a quote is not closed; put \" at the value's end"};
    if (inWord) words.push_back(std::move(word));
    return {std::move(words), {}};
}

Parsed<std::string> substitute(std::string_view line,
                               const std::map<std::string, std::string, std::less<>>& variables) {
    std::string result;
    for (;;) {
        const auto at = line.find("${");
        const auto end = at == std::string_view::npos ? at : line.find('}', at);
        if (end == std::string_view::npos) break;
        const std::string_view name = line.substr(at + 2, end - at - 2);
        const auto value = variables.find(name);
        if (value == variables.end())
            return {{}, "nobody has set ${" + onOneLine(name, 60) + "}; 'set NAME VALUE' does"};
        result += line.substr(0, at);
        result += value->second;
        line.remove_prefix(end + 1);
    }
    result += line;
    return {std::move(result), {}};
}

Parsed<Parameters> commandParameters(const CommandSpec& command,
                                     const std::vector<std::string>& words) {
    // The values of each parameter, gathered before they are put in the order they are sent.
    struct Given {
        const ParameterSpec* spec;
        Parameters parameters;
        unsigned elements = 0;
    };
    std::vector<Given> given;
    for (const ParameterSpec& spec : command.parameters) given.push_back({&spec, {}, 0});

    std::size_t nextPositional = 0;
    for (const std::string& word : words) {
        const auto equals = word.find('=');
        Target target;
        std::string_view value = word;
        if (equals != std::string::npos && isKey(std::string_view(word).substr(0, equals))) {
            target = targetOf(command, std::string_view(word).substr(0, equals));
            if (!target.spec) return {{}, unknownKey(command, word.substr(0, equals))};
            value = std::string_view(word).substr(equals + 1);
        } else {
            while (nextPositional < given.size() && !given[nextPositional].parameters.empty() &&
                   given[nextPositional].spec->kind != Kind::list)
                ++nextPositional;
            if (nextPositional == given.size() || given[nextPositional].spec->kind == Kind::map)
                return {{},
                        "'" + onOneLine(word, 60) + "' is one value too many for " + command.name +
                            "; 'help " + command.name + "' tells what it takes"};
            target = {given[nextPositional].spec, given[nextPositional].spec->name};
        }
        if (const std::string problem = valueProblem(*target.spec, value); !problem.empty())
            return {{}, problem};
        Given& of = *std::find_if(given.begin(), given.end(),
                                  [&](const Given& g) { return g.spec == target.spec; });
        if (target.spec->kind == Kind::list && target.key == target.spec->name) {
            for (std::string& element : split(value, ';'))
                if (!element.empty())
                    of.parameters.emplace_back(target.key + std::to_string(of.elements++),
                                               std::move(element));
        } else {
            set(of.parameters, target.key, std::string(value));
            if (target.spec->kind == Kind::list) ++of.elements;
        }
    }

    Parameters all;
    for (Given& one : given) {
        if (one.spec->needed && one.parameters.empty())
            return {{},
                    std::string(command.name) + " needs " + one.spec->name + "=... (" +
                        one.spec->what + ")"};
        // What may be left out goes empty, as the real application sends it.
        if (one.parameters.empty() && one.spec->kind != Kind::list && one.spec->kind != Kind::map)
            one.parameters.emplace_back(one.spec->name, one.spec->kind == Kind::yesNo ? "no" : "");
        std::move(one.parameters.begin(), one.parameters.end(), std::back_inserter(all));
    }
    return {std::move(all), {}};
}

Parsed<Parameters> plainParameters(const std::vector<std::string>& words) {
    Parameters parameters;
    for (const std::string& word : words) {
        const auto equals = word.find('=');
        if (equals == std::string::npos || equals == 0)
            return {{}, "'" + onOneLine(word, 60) + "' should be KEY=VALUE"};
        set(parameters, word.substr(0, equals), word.substr(equals + 1));
    }
    return {std::move(parameters), {}};
}

}  // namespace orvane::standin::app
