#include "standins/app/report_lines.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

constexpr std::size_t kKindWidth = 10;
constexpr std::size_t kNameWidth = 20;
// Where a response's map stands: under the name, to the right of the time.
constexpr const char* kMapIndent = "                        ";

bool isListElement(std::string_view key) {
    constexpr std::string_view prefix = "trackPaths";
    return startsWithIgnoringCase(key, prefix) && parseNumber(key.substr(prefix.size()));
}

// "10,20,800,600" is for programs; a person wants to know which is which.
std::string rectangleInWords(const std::string& value) {
    int left = 0, top = 0, width = 0, height = 0;
    char rest = 0;
    if (std::sscanf(value.c_str(), "%d,%d,%d,%d%c", &left, &top, &width, &height, &rest) != 4)
        return " (not left,top,width,height)";
    return " (" + std::to_string(width) + "x" + std::to_string(height) + " at " +
           std::to_string(left) + "," + std::to_string(top) + ")";
}

std::string parametersOnOneLine(const Parameters& parameters) {
    constexpr std::size_t elementsShown = 3;
    std::string line;
    std::size_t elements = 0;
    for (const auto& [key, value] : parameters) {
        if (isListElement(key) && ++elements > elementsShown) continue;
        line += "  " + onOneLine(key, 60) + "=" + asWord(value);
        if (key == "PlayerRect") line += rectangleInWords(value);
    }
    if (elements > elementsShown)
        line += "  and " + std::to_string(elements - elementsShown) + " more of " +
                std::to_string(elements) + " tracks";
    return line;
}

std::string line(const char* kind, const std::string& name, const std::string& rest) {
    std::string text = fitted(kind, kKindWidth);
    text += rest.empty() || characterCount(name) >= kNameWidth ? onOneLine(name)
                                                               : fitted(name, kNameWidth);
    return text + rest;
}

std::string shownResponse(const Message& message) {
    constexpr std::string_view mapPrefix = "metadataOut.";
    const std::string* result = find(message.parameters, "return_value");
    std::string text =
        line("response", message.name, "  " + (result ? asWord(*result) : "(no return value)"));
    Parameters others;
    std::string map, empty;
    for (const auto& [key, value] : message.parameters) {
        const bool inMap = startsWithIgnoringCase(key, mapPrefix);
        const std::string field =
            onOneLine(inMap ? std::string_view(key).substr(mapPrefix.size()) : key, 60);
        if (inMap && value.empty())
            empty += (empty.empty() ? "" : ", ") + field;
        else if (inMap)
            map += "\n" + std::string(kMapIndent) + fitted(field, 13) + " " + onOneLine(value);
        else if (!sameIgnoringCase(key, "return_value"))
            others.emplace_back(key, value);
    }
    if (!empty.empty()) map += "\n" + std::string(kMapIndent) + "empty: " + empty;
    return text + parametersOnOneLine(others) + map;
}

}  // namespace

std::string shown(const Arrival& arrival) {
    switch (arrival.what) {
        case Arrival::What::problem:
            return line("PROBLEM", describe(arrival.pipe), arrival.text);
        case Arrival::What::connected:
            return line("link", describe(arrival.pipe), "connected");
        case Arrival::What::disconnected:
            return line("link", describe(arrival.pipe), "disconnected: " + arrival.text);
        case Arrival::What::message:
            break;
    }
    const Message& message = arrival.message;
    if (message.kind == Message::Kind::response) return shownResponse(message);
    return line(message.kind == Message::Kind::event ? "event" : "command", message.name,
                parametersOnOneLine(message.parameters));
}

std::string shownCommand(const std::string& name, const Parameters& parameters) {
    return line("command", name, parametersOnOneLine(parameters));
}

std::string timeNow() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        1000;
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &seconds);
#else
    localtime_r(&seconds, &local);
#endif
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min,
                  local.tm_sec, static_cast<int>(milliseconds));
    return text;
}

}  // namespace orvane::standin::app
