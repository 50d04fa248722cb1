#include "standins/app/terminal.h"

#include <iostream>

#include "standins/app/words.h"

namespace orvane::standin::app {
namespace {

constexpr std::wstring_view kPromptText = L"orvane> ";

}  // namespace

Terminal::Terminal()
    : m_in(GetStdHandle(STD_INPUT_HANDLE)), m_out(GetStdHandle(STD_OUTPUT_HANDLE)) {
    DWORD mode = 0;
    m_outIsConsole = GetConsoleMode(m_out, &mode) != FALSE;
    m_console = m_outIsConsole && GetConsoleMode(m_in, &m_formerMode) != FALSE;
    // Keys come one by one, so that a line can be completed, and moved when something is printed.
    if (m_console) SetConsoleMode(m_in, ENABLE_PROCESSED_INPUT);
}

Terminal::~Terminal() {
    if (m_console) SetConsoleMode(m_in, m_formerMode);
}

void Terminal::print(const String& text) {
    const std::lock_guard lock(m_mutex);
    hidePrompt();
    write(text + "\n");
    showPrompt();
}

void Terminal::write(const String& text) {
    DWORD written = 0;
    if (m_outIsConsole) {
        const String lines = text.replace("\n", "\r\n");
        WriteConsoleW(m_out, lines.toWideCharPointer(),
                      static_cast<DWORD>(wcslen(lines.toWideCharPointer())), &written, nullptr);
        return;
    }
    WriteFile(m_out, text.toRawUTF8(), static_cast<DWORD>(text.getNumBytesAsUTF8()), &written,
              nullptr);
}

void Terminal::showPrompt() {
    if (!m_prompting) return;
    // A line longer than the window cannot be erased with plain characters, so only its end is
    // shown.
    CONSOLE_SCREEN_BUFFER_INFO info{};
    std::size_t width = 80;
    if (GetConsoleScreenBufferInfo(m_out, &info) && info.dwSize.X > 20)
        width = static_cast<std::size_t>(info.dwSize.X);
    const std::size_t room = width - kPromptText.size() - 1;
    std::wstring line(kPromptText);
    line += m_typed.size() > room ? m_typed.substr(m_typed.size() - room) : m_typed;
    m_shownLength = line.size();
    DWORD written = 0;
    WriteConsoleW(m_out, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

void Terminal::hidePrompt() {
    if (!m_prompting || m_shownLength == 0) return;
    const std::wstring blank = L'\r' + std::wstring(m_shownLength, L' ') + L'\r';
    DWORD written = 0;
    WriteConsoleW(m_out, blank.data(), static_cast<DWORD>(blank.size()), &written, nullptr);
    m_shownLength = 0;
}

std::optional<String> Terminal::readLine() {
    if (m_console) return readTypedLine();
    std::string line;
    if (!std::getline(std::cin, line)) return {};
    return String::fromUTF8(line.c_str());
}

std::optional<String> Terminal::readTypedLine() {
    {
        const std::lock_guard lock(m_mutex);
        m_typed.clear();
        m_recalled = m_history.size();
        m_prompting = true;
        showPrompt();
    }
    for (;;) {
        INPUT_RECORD record{};
        DWORD count = 0;
        if (!ReadConsoleInputW(m_in, &record, 1, &count) || count == 0) return {};
        if (record.EventType != KEY_EVENT || !record.Event.KeyEvent.bKeyDown) continue;
        const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
        const wchar_t c = key.uChar.UnicodeChar;
        const bool moves = key.wVirtualKeyCode == VK_UP || key.wVirtualKeyCode == VK_DOWN;
        if (c == 0 && !moves) continue;  // Shift alone, a function key
        const std::lock_guard lock(m_mutex);
        hidePrompt();
        if (key.wVirtualKeyCode == VK_RETURN || c == L'\r' || c == L'\n') {
            showPrompt();
            m_prompting = false;
            write("\n");
            if (!m_typed.empty() && (m_history.empty() || m_history.back() != m_typed))
                m_history.push_back(m_typed);
            return String(m_typed.c_str());
        }
        if (c == 4 || c == 26) {  // Ctrl+D and Ctrl+Z end the input, as everywhere
            m_prompting = false;
            return {};
        }
        if (c == L'\t')
            complete();
        else if ((c == L'\b' || c == 0x7F) && !m_typed.empty())
            m_typed.pop_back();
        else if (c == 21 || c == 27)  // Ctrl+U, Escape
            m_typed.clear();
        else if (key.wVirtualKeyCode == VK_UP && m_recalled > 0)
            m_typed = m_history[--m_recalled];
        else if (key.wVirtualKeyCode == VK_DOWN && m_recalled < m_history.size())
            m_typed = ++m_recalled < m_history.size() ? m_history[m_recalled] : L"";
        else if (c >= L' ')
            m_typed += c;
        showPrompt();
    }
}

void Terminal::complete() {
    String line(m_typed.c_str());
    const StringArray candidates = app::complete(line);
    if (!candidates.isEmpty() && line == String(m_typed.c_str()))
        write(candidates.joinIntoString("  ") + "\n");
    m_typed = line.toWideCharPointer();
}

}  // namespace orvane::standin::app
