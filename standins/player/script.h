#pragma once

// Drives the player without a person: one command in a line, carried out in order on the player's
// own thread, with the message loop running between commands.

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace orvane::standin {

class Player;

class Script {
public:
    using Report = std::function<void(const std::string&)>;

    Script(Player& player, Report report) : m_player(player), m_report(std::move(report)) {}
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    // Player's own thread. A line that is no command is reported and counted as a failure.
    void feed(const std::string& line);
    [[nodiscard]] unsigned failures() const { return m_failures; }

    using Arguments = std::vector<std::wstring>;

    // The commands; each returns false when its arguments are not understood.
    bool showWindow(int how);
    bool moveWindow(const Arguments& arguments);
    bool shrinkWindow();
    bool restoreNormal();
    bool activate();
    bool play(const Arguments& arguments);
    bool control(const wchar_t* what);
    bool setMode(const Arguments& arguments);
    bool sendMedia(const Arguments& arguments);
    bool sendPlaylists(const Arguments& arguments);
    bool printPlaylists();
    bool makeSecondObject();
    bool close();
    bool exit(const Arguments& arguments);

private:
    void next();
    void run(const std::string& line);

    Player& m_player;
    Report m_report;
    std::deque<std::string> m_lines;
    unsigned m_failures = 0;
    bool m_busy = false;  // a command is under way; it may pump messages
};

std::string scriptHelp();

// A line's words; double quotes hold one with spaces together.
std::vector<std::wstring> splitWords(const std::wstring& line);

}  // namespace orvane::standin
