#pragma once

#include <windows.h>

#include <sddl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "common/link/pipe_listener.h"
#include "common/messages/frame.h"
#include "harness/waiting.h"
#include "platform/handles.h"

namespace orvane::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

inline juce::String uniquePipeName() {
    static std::atomic<int> count{0};
    return "OrvaneTest." + juce::String(static_cast<int>(GetCurrentProcessId())) + "." +
           juce::String(++count);
}

inline long long millisecondsFor(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start)
        .count();
}

// Something that one thread brings about and others wait for.
class Signal {
public:
    void give() { SetEvent(m_event.get()); }
    bool await(DWORD timeoutMs = 10'000) {
        return WaitForSingleObject(m_event.get(), timeoutMs) == WAIT_OBJECT_0;
    }

private:
    UniqueHandle m_event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

// The application's end as bare as can be, to send what no application should.
class RawServer {
public:
    explicit RawServer(const juce::String& name) : m_name(name) { reopen(); }

    // A pipe that a client had takes none again before it is made anew, which nobody can while that
    // client has it open. `security` describes its owner and more (SDDL).
    bool reopen(const char* security = nullptr) {
        UniqueLocalMemory descriptor;
        if (security != nullptr)
            ConvertStringSecurityDescriptorToSecurityDescriptorA(security, SDDL_REVISION_1,
                                                                 descriptor.put(), nullptr);
        SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.get(), FALSE};
        m_pipe.reset();
        m_pipe.reset(CreateNamedPipeW(("\\\\.\\pipe\\" + m_name).toWideCharPointer(),
                                      PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                      PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, 64, 64, 0,
                                      &attributes));
        return static_cast<bool>(m_pipe);
    }

    // Takes the client that has opened the pipe, or waits for one.
    bool accept() {
        return ConnectNamedPipe(m_pipe.get(), nullptr) || GetLastError() == ERROR_PIPE_CONNECTED;
    }

    // Whether the client that was accepted is there yet.
    [[nodiscard]] bool hasClient() const {
        return PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, nullptr, nullptr) != FALSE;
    }

    bool write(const Bytes& bytes) {
        DWORD written = 0;
        return WriteFile(m_pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                         nullptr) &&
               written == bytes.size();
    }

    bool writeFrame(const std::string& payload) { return write(frame::encode(bytesOf(payload))); }

    // Exactly `count` bytes, or fewer at the end of the stream.
    Bytes read(std::size_t count) {
        Bytes bytes(count);
        std::size_t filled = 0;
        DWORD got = 0;
        while (filled < count && ReadFile(m_pipe.get(), bytes.data() + filled,
                                          static_cast<DWORD>(count - filled), &got, nullptr))
            filled += got;
        bytes.resize(filled);
        return bytes;
    }

    Bytes readPayload() {
        const Bytes bytes = read(frame::kHeaderSize);
        frame::Header header{};
        if (bytes.size() < header.size()) return {};
        std::copy(bytes.begin(), bytes.end(), header.begin());
        return read(frame::decodeHeader(header).value_or(0));
    }

    void close() { m_pipe.reset(); }
    // When everything written has been read.
    void closeAfterReading() {
        FlushFileBuffers(m_pipe.get());
        close();
    }

private:
    juce::String m_name;
    UniqueFile m_pipe;
};

// Keeps what it hears.
class TestListener final : public PipeListener {
public:
    using PipeListener::PipeListener;
    ~TestListener() override { closeForGood(); }

    void connectionMade() override {
        PipeListener::connectionMade();
        ++made;
    }
    void connectionLost() override {
        PipeListener::connectionLost();
        if (onLost) onLost();
        lostOn = GetCurrentThreadId();
        ++lost;
    }
    void messageReceived(std::span<const std::uint8_t> payload) override {
        {
            const std::lock_guard lock(m_lock);
            m_payloads.emplace_back(payload.begin(), payload.end());
        }
        if (onMessage) onMessage();
    }

    std::vector<std::string> payloads() const {
        const std::lock_guard lock(m_lock);
        return m_payloads;
    }

    std::function<void()> onMessage;
    std::function<void()> onLost;
    std::atomic<int> made{0};
    std::atomic<int> lost{0};
    std::atomic<DWORD> lostOn{0};

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_payloads;
};

}  // namespace orvane::test
