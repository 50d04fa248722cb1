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

// The file name of a pipe.
[[nodiscard]] std::wstring pipePath(const juce::String& name);

// The application's end of a pipe by bare calls that wait, to send what no application should.
class RawServer {
public:
    explicit RawServer(const juce::String& name) : m_name(pipePath(name)) { reopen(); }

    // A pipe that a client had takes none again before it is made anew, which nobody can while that
    // client has it open. `security` describes its owner and more (SDDL).
    bool reopen(const char* security = nullptr);

    // Takes the client that has opened the pipe, or waits for one.
    bool accept();
    // Whether the client that was accepted is there yet.
    [[nodiscard]] bool hasClient() const;

    bool write(const Bytes& bytes);
    bool writeFrame(const std::string& payload) { return write(frame::encode(bytesOf(payload))); }

    // Exactly `count` bytes, or fewer at the end of the stream.
    Bytes read(std::size_t count);
    Bytes readPayload();

    void close() { m_pipe.reset(); }
    // When everything written has been read.
    void closeAfterReading();

private:
    std::wstring m_name;
    UniqueFile m_pipe;
};

// A stranger that serves a pipe in the application's place, again and again, on its own thread.
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
