#include "standins/player/script.h"

#include <windows.h>

#include <utility>

#include "standins/player/com_support.h"
#include "standins/player/model.h"
#include "standins/player/player.h"

namespace orvane::standin {

namespace {

using Arguments = Script::Arguments;

struct Command {
    const wchar_t* name;
    const char* arguments;
    const char* help;
    bool (*run)(Script&, const Arguments&);
};

constexpr Command kCommands[] = {
    {L"show", "", "show the window",
     [](Script& s, const Arguments&) { return s.showWindow(SW_SHOW); }},
    {L"hide", "", "hide the window",
     [](Script& s, const Arguments&) { return s.showWindow(SW_HIDE); }},
    {L"move", "X Y W H", "move and size the window",
     [](Script& s, const Arguments& a) { return s.moveWindow(a); }},
    {L"maximise", "", "", [](Script& s, const Arguments&) { return s.showWindow(SW_MAXIMIZE); }},
    {L"minimise", "", "", [](Script& s, const Arguments&) { return s.showWindow(SW_MINIMIZE); }},
    {L"restore", "", "as it was before maximise or minimise",
     [](Script& s, const Arguments&) { return s.showWindow(SW_RESTORE); }},
    {L"special", "", "shrink the window to 300 by 80",
     [](Script& s, const Arguments&) { return s.shrinkWindow(); }},
    {L"normal", "", "the ordinary 800 by 600 again",
     [](Script& s, const Arguments&) { return s.restoreNormal(); }},
    {L"activate", "", "bring the window to the front",
     [](Script& s, const Arguments&) { return s.activate(); }},
    {L"play", "[PATH|INDEX]", "open that track (\"\": none) and play it, or the current one",
     [](Script& s, const Arguments& a) { return s.play(a); }},
    {L"stop", "", "", [](Script& s, const Arguments&) { return s.control(L"stop"); }},
    {L"set", "MODE on|off", "a settings mode: shuffle, autoRewind, loop",
     [](Script& s, const Arguments& a) { return s.setMode(a); }},
    {L"sendto-media", "INDEX...|all", "send library items to the plug-ins",
     [](Script& s, const Arguments& a) { return s.sendMedia(a); }},
    {L"sendto-playlist", "NAME...", "send playlists to the plug-ins",
     [](Script& s, const Arguments& a) { return s.sendPlaylists(a); }},
    {L"print-playlists", "", "", [](Script& s, const Arguments&) { return s.printPlaylists(); }},
    {L"second-object", "", "make another object of each plug-in, without a core, and release it",
     [](Script& s, const Arguments&) { return s.makeSecondObject(); }},
    {L"close", "", "close the window, as its user would",
     [](Script& s, const Arguments&) { return s.close(); }},
    {L"exit", "[CODE]", "leave at once, with the plug-ins still alive",
     [](Script& s, const Arguments& a) { return s.exit(a); }},
};

}  // namespace

std::vector<std::wstring> splitWords(const std::wstring& line) {
    std::vector<std::wstring> words;
    bool inWord = false;
    bool quoted = false;
    for (const wchar_t c : line) {
        if (c == L'"') {
            quoted = !quoted;
            if (!inWord) words.emplace_back();
            inWord = true;
        } else if (!quoted && (c == L' ' || c == L'\t' || c == L'\r')) {
            inWord = false;
        } else {
            if (!inWord) words.emplace_back();
            inWord = true;
            words.back() += c;
        }
    }
    return words;
}

void Script::feed(const std::string& line) {
    m_lines.push_back(line);
    next();
}

void Script::next() {
    if (m_busy || m_lines.empty()) return;
    m_busy = true;
    // Through the queue: what the command before has set off is dispatched first.
    m_player.model().apartment.post([this] {
        const std::string line = std::move(m_lines.front());
        m_lines.pop_front();
        run(line);
        m_busy = false;
        next();
    });
}

void Script::run(const std::string& line) {
    const Arguments words = splitWords(toWide(line));
    if (words.empty() || words.front().starts_with(L"#")) return;
    for (const Command& command : kCommands) {
        if (words.front() != command.name) continue;
        if (!command.run(*this, Arguments(words.begin() + 1, words.end()))) {
            ++m_failures;
            m_report("cannot do \"" + line + "\"; it goes: " + toUtf8(command.name) + " " +
                     command.arguments);
        }
        return;
    }
    ++m_failures;
    m_report("unknown command \"" + line + "\"; --help lists the known ones");
}

std::string scriptHelp() {
    std::string text;
    for (const Command& command : kCommands) {
        std::string left = "  " + toUtf8(command.name) + " " + command.arguments;
        left.resize(left.size() < 26 ? 26 : left.size() + 1, ' ');
        text += left + command.help + "\n";
    }
    return text;
}

}  // namespace orvane::standin
