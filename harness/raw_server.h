#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

#include "common/messages/frame.h"
#include "harness/files.h"
#include "platform/handles.h"

namespace orvane::test {

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// The pipe's path, with "\\.\pipe\".
[[nodiscard]] std::wstring pipePath(const juce::String& name);

// The application's end of a pipe, written with blocking Win32 calls only, to send invalid data.
class RawServer {
public:
    explicit RawServer(const juce::String& name) : m_name(pipePath(name)) { reopen(); }

    // Creates the pipe again, which is necessary before another client can connect. Fails while the
    // last client has it open. `security` is a security descriptor (SDDL) or null.
    bool reopen(const char* security = nullptr);

    // Waits until a client has opened the pipe.
    bool accept();
    // Whether the accepted client is still connected.
    [[nodiscard]] bool hasClient() const;

    bool write(const Bytes& bytes);
    bool writeFrame(const std::string& payload) { return write(frame::encode(bytesOf(payload))); }

    // Exactly `count` bytes, or fewer at the end of the stream.
    Bytes read(std::size_t count);
    Bytes readPayload();

    void close() { m_pipe.reset(); }
    // Closes the pipe after the client has read everything.
    void closeAfterReading();

private:
    std::wstring m_name;
    UniqueFile m_pipe;
};

// Another program that has taken the pipe's name: serves one client after another, in a wrong way,
// on its own thread.
class Squatter {
public:
    enum class Way { neverReads, writesGarbage, closesAtOnce };

    Squatter(const juce::String& name, Way way);
    ~Squatter();
    Squatter(const Squatter&) = delete;
    Squatter& operator=(const Squatter&) = delete;

    std::atomic<unsigned> clients{0};  // taken so far

private:
    void serve(const juce::String& name, Way way);

    const std::wstring m_path;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_stopped{false};
    std::thread m_thread;
};

}  // namespace orvane::test
