#include "standins/app/message.h"

#include <algorithm>

#include "standins/app/text.h"

namespace orvane::standin::app {

const char* describe(PipeId pipe) { return pipe == PipeId::event ? "event pipe" : "command pipe"; }

const char* systemName(PipeId pipe) {
    return pipe == PipeId::event ? "IpcOrvaneEventPipe" : "IpcOrvaneCommandPipe";
}

const std::string* find(const Parameters& parameters, std::string_view key) {
    const auto at = std::find_if(parameters.begin(), parameters.end(), [&](const Parameter& p) {
        return sameIgnoringCase(p.first, key);
    });
    return at == parameters.end() ? nullptr : &at->second;
}

const std::string& valueOf(const Parameters& parameters, std::string_view key) {
    static const std::string none;
    const std::string* value = find(parameters, key);
    return value ? *value : none;
}

void set(Parameters& parameters, std::string_view key, std::string value) {
    for (Parameter& parameter : parameters)
        if (sameIgnoringCase(parameter.first, key)) {
            parameter.second = std::move(value);
            return;
        }
    parameters.emplace_back(std::string(key), std::move(value));
}

}  // namespace orvane::standin::app
