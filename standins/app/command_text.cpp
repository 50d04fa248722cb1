#include "standins/app/command_text.h"

#include <algorithm>

#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

using Kind = ParameterForm::Kind;

bool isKey(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '.' || c == '-';
    });
}

const ParameterForm* formOf(const CommandForm& command, std::string_view key) {
    for (const ParameterForm& form : command.parameters)
        if (sameIgnoringCase(form.name, key)) return &form;
    return nullptr;
}

// Which parameter a key belongs to, and the key as it is sent.
struct Target {
    const ParameterForm* form = nullptr;
    std::string key;
};

Target targetOf(const CommandForm& command, std::string_view key) {
    if (const ParameterForm* form = formOf(command, key))
        return form->kind == Kind::map ? Target{} : Target{form, form->name};
    for (const ParameterForm& form : command.parameters) {
        const std::string_view name = form.name;
        if (!startsWithIgnoringCase(key, name) || key.size() == name.size()) {
            if (form.kind != Kind::map) continue;
            for (const char* field : metadataFields())
                if (sameIgnoringCase(field, key)) return {&form, std::string(name) + '.' + field};
            continue;
        }
        const std::string_view rest = key.substr(name.size());
        if (form.kind == Kind::map && rest.size() > 1 && rest[0] == '.')
            return {&form, std::string(name) + std::string(rest)};
        if (form.kind == Kind::list && parseNumber(rest))
            return {&form, std::string(name) + std::string(rest)};
    }
    return {};
}

std::string unknownKey(const CommandForm& command, std::string_view key) {
    std::vector<std::string> names;
    for (const ParameterForm& form : command.parameters)
        names.emplace_back(form.kind == Kind::map ? std::string(form.name) + ".FIELD" : form.name);
    std::string text = std::string(command.name) + " has no parameter '" + onOneLine(key, 60) + "'";
    text += names.empty() ? "; it takes none" : "; it takes " + join(names, ", ");
    return text + " ('send' sends anything unchecked)";
}

std::string valueProblem(const ParameterForm& form, std::string_view value) {
    if (form.kind == Kind::number && !parseNumber(value))
        return std::string(form.name) + " must be a number from 0, not '" + onOneLine(value, 60) +
               "'";
    if (form.kind == Kind::yesNo && !sameIgnoringCase(value, "yes") &&
        !sameIgnoringCase(value, "no"))
        return std::string(form.name) + " must be yes or no, not '" + onOneLine(value, 60) + "'";
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

Parsed<Parameters> commandParameters(const CommandForm& command,
                                     const std::vector<std::string>& words) {
    // The values of each parameter, gathered before they are put in the order they are sent.
    struct Given {
        const ParameterForm* form;
        Parameters parameters;
        unsigned elements = 0;
    };
    std::vector<Given> given;
    for (const ParameterForm& form : command.parameters) given.push_back({&form, {}, 0});

    std::size_t nextPositional = 0;
    for (const std::string& word : words) {
        const auto equals = word.find('=');
        Target target;
        std::string_view value = word;
        if (equals != std::string::npos && isKey(std::string_view(word).substr(0, equals))) {
            target = targetOf(command, std::string_view(word).substr(0, equals));
            if (!target.form) return {{}, unknownKey(command, word.substr(0, equals))};
            value = std::string_view(word).substr(equals + 1);
        } else {
            while (nextPositional < given.size() && !given[nextPositional].parameters.empty() &&
                   given[nextPositional].form->kind != Kind::list)
                ++nextPositional;
            if (nextPositional == given.size() || given[nextPositional].form->kind == Kind::map)
                return {{},
                        "'" + onOneLine(word, 60) + "' is one value too many for " + command.name +
                            "; 'help " + command.name + "' tells what it takes"};
            target = {given[nextPositional].form, given[nextPositional].form->name};
        }
        if (const std::string problem = valueProblem(*target.form, value); !problem.empty())
            return {{}, problem};
        Given& of = *std::find_if(given.begin(), given.end(),
                                  [&](const Given& g) { return g.form == target.form; });
        if (target.form->kind == Kind::list && target.key == target.form->name) {
            for (std::string& element : split(value, ';'))
                if (!element.empty())
                    of.parameters.emplace_back(target.key + std::to_string(of.elements++),
                                               std::move(element));
        } else {
            set(of.parameters, target.key, std::string(value));
            if (target.form->kind == Kind::list) ++of.elements;
        }
    }

    Parameters all;
    for (Given& one : given) {
        if (one.form->needed && one.parameters.empty())
            return {{},
                    std::string(command.name) + " needs " + one.form->name + "=... (" +
                        one.form->what + ")"};
        // What may be left out goes empty, as the real application sends it.
        if (one.parameters.empty() && one.form->kind != Kind::list && one.form->kind != Kind::map)
            one.parameters.emplace_back(one.form->name, one.form->kind == Kind::yesNo ? "no" : "");
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
