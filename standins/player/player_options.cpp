#include "standins/player/player_options.h"

#include "standins/player/com_support.h"
#include "standins/player/script.h"

namespace orvane::standin {

bool readNumber(const std::wstring& text, unsigned& number) {
    if (text.empty() || text.size() > 9) return false;
    number = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9') return false;
        number = number * 10 + static_cast<unsigned>(c - L'0');
    }
    return true;
}

bool readState(const std::wstring& text, long& state) {
    static const std::map<std::wstring, long> states = {
        {L"stopped", 1}, {L"paused", 2}, {L"playing", 3}};
    const auto found = states.find(text);
    if (found == states.end()) return false;
    state = found->second;
    return true;
}

namespace {

using Reader = bool (*)(PlayerOptions&, const std::wstring&);

struct Option {
    const wchar_t* name;
    const char* value;  // what stands after "=", null for a switch
    const char* help;
    Reader read;
};

template <unsigned PlayerOptions::*Member>
bool number(PlayerOptions& options, const std::wstring& value) {
    return readNumber(value, options.*Member);
}

template <bool PlayerOptions::*Member>
bool flag(PlayerOptions& options, const std::wstring&) {
    options.*Member = true;
    return true;
}

template <std::wstring PlayerOptions::*Member>
bool text(PlayerOptions& options, const std::wstring& value) {
    options.*Member = value;
    return !value.empty();
}

constexpr Option kOptions[] = {
    {L"library", "FOLDER", "the music library: all .wma files in it and below",
     [](PlayerOptions& o, const std::wstring& v) {
         o.library = v;
         return !v.empty();
     }},
    {L"synthetic", "N", "N more items that have no files", number<&PlayerOptions::synthetic>},
    {L"never", "STATE", "playing, paused or stopped is never reached (repeatable)",
     [](PlayerOptions& o, const std::wstring& v) {
         long state = 0;
         if (!readState(v, state)) return false;
         o.neverReached.insert(state);
         return true;
     }},
    {L"language", "LANG", "of the window's caption: en, fr, es, or legacy",
     text<&PlayerOptions::language>},
    {L"tags-after", "MS", "tags reach their files so many milliseconds later, or never",
     [](PlayerOptions& o, const std::wstring& v) {
         o.tagsAfterMs = PlayerOptions::kNever;
         return v == L"never" || readNumber(v, o.tagsAfterMs);
     }},
    {L"documented-attributes", nullptr,
     "files and library share only the attributes that are documented so",
     flag<&PlayerOptions::documentedAttributes>},
    {L"serve-on-own-thread", nullptr,
     "hand calls from other threads to the player's own thread, not serve them at once",
     flag<&PlayerOptions::serveOnOwnThread>},
    {L"plugin", "FILE",
     "load this module in place of the registered plug-ins, when the application is there",
     text<&PlayerOptions::plugin>},
    {L"script", "FILE", "read commands from FILE, or with - from standard input",
     text<&PlayerOptions::script>},
    {L"help", nullptr, "this text", flag<&PlayerOptions::help>},
};

const Option* findOption(const std::wstring& name) {
    for (const Option& option : kOptions) {
        if (name == option.name) return &option;
    }
    return nullptr;
}

}  // namespace

bool parseOptions(const std::vector<std::wstring>& arguments, PlayerOptions& options,
                  std::string& error) {
    for (const std::wstring& argument : arguments) {
        const size_t equals = argument.find(L'=');
        const bool hasValue = equals != std::wstring::npos;
        const Option* option = argument.starts_with(L"--")
                                   ? findOption(argument.substr(2, hasValue ? equals - 2 : equals))
                                   : nullptr;
        if (option == nullptr) {
            error = "unknown argument " + toUtf8(argument) + "; --help lists the known ones";
            return false;
        }
        const std::string name = "--" + toUtf8(option->name);
        if (hasValue != (option->value != nullptr)) {
            error = name;
            if (hasValue)
                error += " takes no value";
            else
                error.append(" needs a value: ").append(name).append("=").append(option->value);
            return false;
        }
        const std::wstring value = hasValue ? argument.substr(equals + 1) : std::wstring();
        if (!option->read(options, value)) {
            error = toUtf8(argument) + ": not a value for " + name + "=" + option->value;
            return false;
        }
    }
    return true;
}

std::string usageText() {
    std::string text =
        "A stand-in for Windows Media Player: loads the registered background plug-ins and\n"
        "offers them the player's automation over a folder of .wma files.\n\n"
        "player [options]\n";
    for (const Option& option : kOptions) {
        std::string left = "  --" + toUtf8(option.name);
        if (option.value != nullptr) left += std::string("=") + option.value;
        left.resize(left.size() < 26 ? 26 : left.size() + 1, ' ');
        text += left + option.help + "\n";
    }
    return text + "\nScript commands, one in a line; # starts a comment:\n" + scriptHelp();
}

}  // namespace orvane::standin
