#include "standins/app/report_lines.h"

namespace orvane::standin::app {
namespace {

// Where a response's map stands: under the name, to the right of the time.
constexpr const char* kMapIndent = "\n                        ";

// "10,20,800,600" is for programs; a person wants to know which is which.
String rectangleInWords(const String& value) {
    const StringArray sides = StringArray::fromTokens(value, ",", "");
    bool isRectangle = sides.size() == 4;
    for (const String& side : sides)
        isRectangle = isRectangle && side.isNotEmpty() && side.containsOnly("-0123456789");
    if (!isRectangle) return " (not left,top,width,height)";
    return " (" + sides[2] + "x" + sides[3] + " at " + sides[0] + "," + sides[1] + ")";
}

}  // namespace

String shownLine(const char* kind, const String& name, const String& rest) {
    return (String(kind).paddedRight(' ', 10) + onOneLine(name).paddedRight(' ', 20) + rest)
        .trimEnd();
}

String shown(const OrvaneMessage& message) {
    constexpr int elementsShown = 3;
    const String map = "metadataOut.";
    const bool isResponse = message.getTagName() == "response";
    String line, fields, empty;
    int elements = 0;
    for (const auto& [key, value] : message.getParameters()) {
        if (isResponse && key.startsWith(map) && value.isEmpty()) {
            empty << (empty.isEmpty() ? "" : ", ") << onOneLine(key.substring(map.length()), 60);
        } else if (isResponse && key.startsWith(map)) {
            fields << kMapIndent << onOneLine(key.substring(map.length()), 60).paddedRight(' ', 13)
                   << " " << onOneLine(value);
        } else if (isResponse && key.equalsIgnoreCase("return_value")) {
            line = "  " + asWord(value) + line;
        } else if (!key.startsWith("trackPaths") || ++elements <= elementsShown) {
            line << "  " << onOneLine(key, 60) << "=" << asWord(value);
            if (key == "PlayerRect") line << rectangleInWords(value);
        }
    }
    if (elements > elementsShown)
        line << "  and " << elements - elementsShown << " more of " << elements << " tracks";
    if (isResponse && !valueIn(message, "return_value")) line = "  (no return value)" + line;
    if (empty.isNotEmpty()) fields << kMapIndent << "empty: " << empty;
    const char* const kind = isResponse ? "response" : isEvent(message) ? "event" : "command";
    return shownLine(kind, message.getName(), line) + fields;
}

}  // namespace orvane::standin::app
