// The application's end of OrVane's link to the player, over Win32 alone: it makes both pipes and
// the mutex, prints every event, and sends the commands that are typed, one after the other. Copy
// what you need from it. protocol.html has the rules that it follows.
//
// Build it (C++17, no libraries) with one of
//   Visual C++:  cl /std:c++17 /EHsc /O2 application.cpp
//   clang-cl:    clang-cl /std:c++17 /EHsc /O2 application.cpp
//   MinGW:       g++ -std=c++17 -O2 -municode -static application.cpp -o application.exe
//
//   application                    reads commands from standard input: NAME KEY=VALUE...
//   application --vectors FOLDER   reads the kit's vectors and compares them with index.json
//
// Exit code: 0 all went well; 1 something was not as it should be; 2 wrong usage; 3 no pipes.

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwctype>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {
// ---- Text: UTF-16 inside, as Windows has it; UTF-8 on the pipes and in files.

std::wstring fromUtf8(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // never more units than bytes
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
    return wide;
}
std::string toUtf8(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
        CP_UTF8, 0, text.data(), size, bytes.data(), size * 3, nullptr, nullptr)));
    return bytes;
}
void print(const std::string& line) {  // any thread
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

// ---- Messages: <root event="name"><key>value</key>...</root>

struct Message {
    std::wstring root, name;  // root: OrVaneIPC (an event), command or response
    std::vector<std::pair<std::wstring, std::wstring>> parameters;
};

constexpr std::pair<wchar_t, std::wstring_view> kEntities[] = {
    {L'&', L"&amp;"}, {L'<', L"&lt;"}, {L'>', L"&gt;"}, {L'"', L"&quot;"}};

// A value with its references replaced. Each is one 16-bit unit: a character beyond U+FFFF comes as
// two, and a half may stand alone. A conforming XML parser refuses both, so documents are read by
// hand here. White space at the ends belongs to the value; a line end is one line feed.
std::wstring decoded(std::wstring_view text) {
    std::wstring result;
    while (!text.empty()) {
        std::size_t length = 1;
        wchar_t unit = text[0];
        if (text.substr(0, 2) == L"&#") {
            const std::size_t end = text.find(L';');
            length = end == text.npos ? text.size() : end + 1;
            const std::wstring digits(text.substr(2, length - 2));
            unit = static_cast<wchar_t>(std::wcstoul(digits.c_str(), nullptr, 10));
        } else if (text.substr(0, 2) == L"\r\n") {
            text.remove_prefix(1);
            unit = L'\n';
        }
        for (const auto& [character, entity] : kEntities) {
            if (text.substr(0, entity.size()) != entity) continue;
            length = entity.size();
            unit = character;
        }
        result += unit;
        text.remove_prefix(length);
    }
    return result;
}

bool isNameUnit(wchar_t c) { return c < 0x80 && (std::iswalnum(c) || c == L'.' || c == L'_'); }

// Plain ASCII, the rest as references: CR LF, too, would otherwise arrive as one line feed.
std::string encoded(std::wstring_view text) {
    static constexpr std::wstring_view kPlain = L" ,;:-()+=?!'#@[]/\\*%~{}";
    std::string result;
    for (const wchar_t unit : text) {
        if (isNameUnit(unit) || kPlain.find(unit) != kPlain.npos) {
            result += static_cast<char>(unit);
            continue;
        }
        std::string reference = "&#" + std::to_string(static_cast<unsigned>(unit)) + ";";
        for (const auto& [character, entity] : kEntities)
            if (unit == character) reference = toUtf8(entity);
        result += reference;
    }
    return result;
}

// Nothing when the payload is not a message in the form that the plug-in writes.
std::optional<Message> parse(std::string_view payload) {
    const std::wstring document = fromUtf8(payload.substr(0, payload.find('\0')));
    std::wstring_view rest = document, text, tag;
    // Goes on to the next tag: `text` is what stands before it, `tag` what is in it.
    const auto next = [&] {
        const std::size_t open = rest.find(L'<'), close = rest.find(L'>', open);
        if (close == rest.npos || close == open + 1) return false;
        text = rest.substr(0, open);
        tag = rest.substr(open + 1, close - open - 1);
        rest.remove_prefix(close + 1);
        return true;
    };
    if (!next() || (tag.front() == L'?' && !next())) return std::nullopt;
    const std::size_t name = tag.find(L" event=\""), end = tag.find(L'"', name + 8);
    if (name == tag.npos || end == tag.npos) return std::nullopt;
    Message message;
    message.root = tag.substr(0, name);
    message.name = decoded(tag.substr(name + 8, end - name - 8));
    if (tag.back() == L'/') return message;
    while (next()) {
        const std::wstring key(tag);
        if (key == L"/" + message.root) return message;
        if (!next() || tag != L"/" + key) return std::nullopt;
        message.parameters.emplace_back(key, decoded(text));
    }
    return std::nullopt;
}

constexpr std::uint32_t kMagic = 0xF2B49E2C, kPayloadLimit = 10'485'760;
struct Header {
    std::uint32_t magic = kMagic, length = 0;  // little-endian, as Windows is; below the limit
};

// Magic, length, document, a zero byte. Empty when it would be too large.
std::string frameOf(const Message& message) {
    const std::string root = toUtf8(message.root);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<" + root + " event=\"" +
                       encoded(message.name) + '"';
    text += message.parameters.empty() ? "/>\r\n" : ">\r\n";
    for (const auto& [key, value] : message.parameters) {
        const std::string name = toUtf8(key);
        text.append("  <").append(name).append(">").append(encoded(value));
        text.append("</").append(name).append(">\r\n");
    }
    if (!message.parameters.empty()) text += "</" + root + ">\r\n";
    text += '\0';
    const Header header{kMagic, static_cast<std::uint32_t>(text.size())};
    if (text.size() >= kPayloadLimit) return {};
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + text;
}

// As JSON in plain ASCII: each other unit is \u and four digits, so half a pair can be shown as
// well.
std::string jsonText(std::wstring_view text) {
    std::string result = "\"";
    char reference[8];
    for (const wchar_t unit : text) {
        if (unit == L'"' || unit == L'\\') result += '\\';
        std::snprintf(reference, sizeof reference, unit >= L' ' && unit <= L'~' ? "%c" : "\\u%04x",
                      static_cast<unsigned>(unit));
        result += reference;
    }
    return result + '"';
}

std::string asJson(const Message& message) {
    std::string text = "\"root\":" + jsonText(message.root) +
                       ",\"name\":" + jsonText(message.name) + ",\"parameters\":{";
    for (const auto& [key, value] : message.parameters) {
        if (text.back() != '{') text += ',';
        text.append(jsonText(key)).append(":").append(jsonText(value));
    }
    return text + "}";
}

// ---- One pipe: made once, for one client after the other.

struct Operation : OVERLAPPED {
    Operation() : OVERLAPPED{} { hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    ~Operation() { CloseHandle(hEvent); }
    // Waits until the operation has ended; until then the system writes to this object.
    bool end(HANDLE pipe, BOOL started) {
        if (!started && GetLastError() != ERROR_IO_PENDING) return false;
        return GetOverlappedResult(pipe, this, &count, TRUE) != FALSE;
    }
    DWORD count = 0;  // bytes
};

class Pipe {
public:
    Pipe(const char* name, std::function<void(const Message&)> receive)
        : m_name(name), m_receive(std::move(receive)) {}
    // False when another program has made the pipe.
    bool create() {
        m_pipe = CreateNamedPipeA(
            ("\\\\.\\pipe\\" + m_name).c_str(),
            PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
            PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 65'536, 65'536, 0, nullptr);
        return m_pipe != INVALID_HANDLE_VALUE;
    }
    // Reads at all times, on a thread of its own, until the program ends.
    void serve() {
        for (;; Sleep(10)) {
            Operation connect;
            m_linked = connect.end(m_pipe, ConnectNamedPipe(m_pipe, &connect)) ||
                       GetLastError() == ERROR_PIPE_CONNECTED;
            if (m_linked) print("link up: " + m_name);
            if (m_linked) readFrames();
            if (m_linked.exchange(false)) print("link down: " + m_name);
            DisconnectNamedPipe(m_pipe);  // the same instance then waits for the next client
        }
    }
    bool isLinked() const { return m_linked; }
    bool send(const Message& message) {
        const std::string frame = frameOf(message);
        const auto size = static_cast<DWORD>(frame.size());
        Operation write;
        return size > 0 && m_linked &&
               write.end(m_pipe, WriteFile(m_pipe, frame.data(), size, nullptr, &write));
    }

private:
    // Until the client has gone, or has sent what is no frame.
    void readFrames() {
        std::string bytes;
        std::vector<char> block(65'536);
        for (;;) {
            Operation read;
            if (!read.end(m_pipe, ReadFile(m_pipe, block.data(), 65'536, nullptr, &read))) return;
            bytes.append(block.data(), read.count);
            std::size_t at = 0;
            for (Header header; bytes.size() - at >= 8; at += 8 + header.length) {
                std::memcpy(&header, &bytes[at], 8);
                if (header.magic != kMagic || header.length == 0 || header.length >= kPayloadLimit)
                    return print("What came over " + m_name + " is no frame: closing the link.");
                if (bytes.size() - at - 8 < header.length) break;
                const auto message = parse(std::string_view(bytes).substr(at + 8, header.length));
                if (message) m_receive(*message);
                if (!message) print("A document that came over " + m_name + " is no message.");
            }
            bytes.erase(0, at);
        }
    }

    const std::string m_name;
    const std::function<void(const Message&)> m_receive;
    HANDLE m_pipe = INVALID_HANDLE_VALUE;
    std::atomic<bool> m_linked{false};
};

// ---- The program.

// NAME KEY=VALUE KEY="a value with spaces"; gives a sentence when the line is not of that form.
std::string spell(std::wstring_view line, Message& command) {
    std::vector<std::wstring> words(1);
    bool inQuotes = false;
    for (const wchar_t c : line) {
        if (c == L'"')
            inQuotes = !inQuotes;
        else if (inQuotes || !std::iswspace(c))
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    }
    if (inQuotes) return "A quotation mark is not closed.";
    command = {L"command", words[0], {}};
    for (std::size_t i = 1; i < words.size() && !words[i].empty(); ++i) {
        const std::wstring key = words[i].substr(0, words[i].find(L'='));
        const bool isName = std::all_of(key.begin(), key.end(), isNameUnit) && !key.empty();
        if (key == words[i] || !isName || !std::iswalpha(key[0]))
            return "'" + toUtf8(words[i]) + "' is not KEY=VALUE, as in trackIndex=0.";
        command.parameters.emplace_back(key, words[i].substr(key.size() + 1));
    }
    return {};
}

int serve() {  // its variables are static, as the threads outlive the call
    static std::mutex mutex;
    static std::condition_variable changed;
    static std::deque<Message> responses;
    static bool goodbye = false;
    static Pipe events("IpcOrvaneEventPipe", [](const Message& event) {
        print("{" + asJson(event) + "}");
        const std::lock_guard lock(mutex);
        goodbye = event.name == L"PlayerGoodbye";
        changed.notify_all();
    });
    static Pipe commands("IpcOrvaneCommandPipe", [](const Message& response) {
        const std::lock_guard lock(mutex);
        responses.push_back(response);
        changed.notify_all();
    });
    // The pipes come before the mutex: a player that finds the mutex expects both pipes.
    if (!events.create() || !commands.create()) {
        print("The pipes cannot be made: another application is running. End it first.");
        return 3;
    }
    CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process");  // kept until the program ends
    std::thread([] { events.serve(); }).detach();
    std::thread([] { commands.serve(); }).detach();
    print("ready");

    std::unique_lock lock(mutex);
    const auto wait = [&](int seconds, const auto& what) {
        for (int i = 0; i < seconds * 10 && !what(); ++i)
            changed.wait_for(lock, std::chrono::milliseconds(100));
        return what();
    };
    // Gives a sentence when there is no response.
    const auto ask = [&](const Message& command) -> std::string {
        if (!wait(30, [&] { return events.isLinked() && commands.isLinked(); }))
            return "No player has linked within 30 seconds.";
        responses.clear();  // of a command that was given up
        lock.unlock();
        const bool sent = commands.send(command);
        lock.lock();
        if (!sent) return "The command was not sent: the link is down, or it is too large.";
        wait(30, [&] { return !responses.empty() || !commands.isLinked(); });
        if (responses.empty()) return "No response came.";
        print("{" + asJson(responses.front()) + "}");
        return {};
    };
    int result = 0;
    lock.unlock();
    for (std::wstring line; std::getline(std::wcin, line);) {
        Message command;
        std::string problem = spell(line, command);
        if (command.name == L"quit") return result;
        lock.lock();
        if (problem.empty() && !command.name.empty()) problem = ask(command);
        lock.unlock();
        if (problem.empty()) continue;
        print(problem);
        result = 1;
    }
    lock.lock();
    while (!wait(1, [&] { return goodbye; })) continue;  // nothing more to say, but much to hear
    return result;
}

// index.json has one vector in a line, with its file and what asJson() makes of it.
int readVectors(const std::filesystem::path& folder) {
    int good = 0, bad = 0;
    std::ifstream index(folder / "index.json", std::ios::binary);
    for (std::string line; std::getline(index, line);) {
        const std::size_t at = line.find("\"file\":\"");
        if (at == line.npos) continue;
        const std::string file = line.substr(at + 8, line.find('"', at + 8) - at - 8);
        std::ifstream stream(folder / file, std::ios::binary);
        const std::string frame{std::istreambuf_iterator<char>(stream), {}};
        Header header;
        if (frame.size() > 8) std::memcpy(&header, frame.data(), 8);
        const auto message = parse(frame.size() > 8 ? frame.substr(8) : frame);
        const bool same = message && header.magic == kMagic && header.length == frame.size() - 8 &&
                          line.find(asJson(*message)) != line.npos &&
                          (message->root != L"command" || frameOf(*message) == frame);
        ++(same ? good : bad);
        if (!same) print(file + " does not hold what index.json says.");
    }
    print(std::to_string(good) + " vectors are as index.json says, not so " + std::to_string(bad));
    return good > 0 && bad == 0 ? 0 : 1;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    _setmode(_fileno(stdin), _O_U8TEXT);
    int result = 2;
    if (argc == 1)
        result = serve();
    else if (argc == 3 && std::wstring_view(argv[1]) == L"--vectors")
        result = readVectors(argv[2]);
    else
        print("Usage: application, or application --vectors FOLDER");
    ExitProcess(static_cast<UINT>(result));  // the pipes' threads are still waiting
}
