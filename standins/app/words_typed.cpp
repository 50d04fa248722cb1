// Parses typed words and parameters; completion and help.

#include "standins/app/words.h"

#include <vector>

namespace orvane::standin::app {
namespace {

// A parameter of a command, as its usage tells it.
struct Form {
    String name, value;
    bool needed;

    [[nodiscard]] bool isNumber() const { return value == "N"; }
    [[nodiscard]] bool isYesNo() const { return value == "yes|no"; }
    [[nodiscard]] bool isList() const { return value.containsChar(';'); }
    [[nodiscard]] bool isMap() const { return name == "metadata"; }
};

std::vector<Form> formsOf(const Word& word) {
    std::vector<Form> forms;
    for (const String& one : StringArray::fromTokens(word.usage, false)) {
        const auto [name, value] = split(one.removeCharacters("[]"), "=");
        forms.push_back({name == "FIELD" ? "metadata" : name, value, !one.startsWithChar('[')});
    }
    return forms;
}

// What the set commands may name without "metadata." before it.
const StringArray& fields() {
    static const StringArray names = StringArray::fromTokens(
        "TrackTitle AlbumTitle AlbumArtist TrackArtist TrackNumber Genre Genre_2 Year RelYear "
        "BitRate OVID Composer LastPlayed PlayCount Comments Rating PartOfSet DiskNumber "
        "DisksInSet AlbumArt Filename",
        false);
    return names;
}

// The key as it is sent, "" when the parameter is not meant.
String keyFor(const Form& form, const String& key) {
    if (form.isMap()) {
        if (key.startsWithIgnoreCase("metadata.")) return form.name + key.substring(8);
        const int field = fields().indexOf(key, true);
        return field < 0 ? String() : form.name + "." + fields()[field];
    }
    if (key.equalsIgnoreCase(form.name)) return form.name;
    const bool isElement = form.isList() && key.startsWithIgnoreCase(form.name) &&
                           parseNumber(key.substring(form.name.length()));
    return isElement ? form.name + key.substring(form.name.length()) : String();
}

}  // namespace

const Word& findWord(const String& typed) {
    const Word* found = nullptr;
    StringArray candidates;
    for (const Word& word : allWords()) {
        if (typed.equalsIgnoreCase(word.name)) return word;
        if (!String(word.name).startsWithIgnoreCase(typed)) continue;
        found = &word;
        candidates.add(word.name);
    }
    if (candidates.size() == 1) return *found;
    throw Failure{"'" + onOneLine(typed, 60) + "' " +
                  (candidates.isEmpty() ? "is no word; 'help' lists them"
                                        : "may be " + candidates.joinIntoString(", "))};
}

OrvaneCommand commandFrom(const Word& word, const StringArray& words) {
    const std::vector<Form> forms = formsOf(word);
    // Gathered before they are put in the order in which they are sent.
    std::vector<StringPairArray> given(forms.size());
    for (const String& text : words) {
        auto [key, value] = split(text, "=");
        std::size_t at = 0;
        // A path may have an equals sign in it as well.
        if (key.length() < text.length() && !key.containsAnyOf(":\\/ ")) {
            while (at < forms.size() && keyFor(forms[at], key).isEmpty()) ++at;
            if (at < forms.size()) key = keyFor(forms[at], key);
        } else {
            while (at < forms.size() && !forms[at].isList() && given[at].size() > 0) ++at;
            if (at < forms.size()) key = forms[at].name;
            value = text;
        }
        if (at == forms.size() || key == "metadata")
            throw Failure{"'" + onOneLine(text, 60) + "' is not for " + word.name +
                          "; it goes: " + word.name + " " + word.usage};
        const Form& form = forms[at];
        if (form.isNumber() && !parseNumber(value))
            throw Failure{form.name + " is a number from 0"};
        if (form.isYesNo() && !value.equalsIgnoreCase("yes") && !value.equalsIgnoreCase("no"))
            throw Failure{form.name + " is yes or no"};
        if (form.isList() && key == form.name) {
            for (const String& element : StringArray::fromTokens(value, ";", ""))
                if (element.isNotEmpty()) given[at].set(key + String(given[at].size()), element);
        } else {
            given[at].set(key, value);
        }
    }
    OrvaneCommand command(word.name);
    for (std::size_t at = 0; at < forms.size(); ++at) {
        const Form& form = forms[at];
        if (given[at].size() == 0 && form.needed) throw Failure{"it needs " + form.name + "=..."};
        if (given[at].size() == 0 && !form.isList() && !form.isMap())
            given[at].set(form.name, form.isYesNo() ? "no" : "");
        for (const String& key : given[at].getAllKeys()) command.setValue(key, given[at][key]);
    }
    return command;
}

StringArray complete(String& line) {
    const String before = line.substring(0, line.lastIndexOfChar(' ') + 1);
    const String typed = line.substring(before.length());
    StringArray candidates;
    const auto offer = [&](const String& text) {
        if (text.startsWithIgnoreCase(typed)) candidates.add(text);
    };
    if (before.isEmpty() || before == "help ") {
        for (const Word& word : allWords()) offer(String(word.name) + " ");
    } else {
        try {
            const String name = split(before, " ").first;
            const Word& word = findWord(name);
            if (word.run != nullptr) return {};
            for (const Form& form : formsOf(word))
                if (!form.isMap()) offer(form.name + "=");
            for (const String& field : fields())
                if (String(word.usage).contains("FIELD")) offer(field + "=");
        } catch (const Failure&) {
            // An unknown word has no parameters to complete.
        }
    }
    if (candidates.isEmpty()) return {};
    String shared = candidates[0];
    for (const String& candidate : candidates)
        while (!candidate.startsWithIgnoreCase(shared)) shared = shared.dropLastCharacters(1);
    line = before + shared;
    return candidates.size() > 1 ? candidates : StringArray();
}

String helpOverview() {
    String text = "For the plug-in (a beginning is enough while it is the only one):\n";
    bool sent = true;
    for (const Word& word : allWords()) {
        if (sent && word.run != nullptr) text << "\nOf this program:\n";
        sent = word.run == nullptr;
        const String left = String("  ") + word.name + (sent ? "" : String(" ") + word.usage);
        text << left.paddedRight(' ', 32);
        if (left.length() > 31) text << "\n" << String().paddedRight(' ', 32);
        text << String(word.help).upToFirstOccurrenceOf("\n", false, false) << "\n";
    }
    return text +
           "\nParameters are KEY=VALUE, or values alone in their order; \"in quotes\" with "
           "spaces,\n"
           "\"\" for a quote inside. 'help WORD' tells its parameters, TAB completes.";
}

String helpFor(const Word& word) {
    return String(word.name) + " " + word.usage + "\n  " + String(word.help).replace("\n", "\n  ");
}

}  // namespace orvane::standin::app
