// A program of the same user that has the application's names, takes every plug-in that comes, and
// never reads a byte.

#include "soak/child.h"

namespace orvane::soak {
namespace {

class DeafEnd {
public:
    explicit DeafEnd(const wchar_t* name) : m_name(name) {}

    // Makes the pipe anew when its client has gone; true when a client has come.
    bool look() {
        const bool client = PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, nullptr, nullptr);
        if (m_pipe && (client || !m_taken)) return client && !std::exchange(m_taken, true);
        m_taken = false;
        m_pipe.reset();  // there is one instance: the old one goes first
        m_pipe.reset(
            CreateNamedPipeW(m_name, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr));
        return false;
    }

private:
    const wchar_t* const m_name;
    UniqueFile m_pipe;
    bool m_taken = false;
};

}  // namespace

int runSquatter(const std::wstring& name) {
    const UniqueHandle running(CreateMutexW(nullptr, FALSE, kRunningMutex));
    SharedCounts counts(name);
    DeafEnd commands(kCommandPipe);
    for (DeafEnd events(kEventPipe);; Sleep(2)) {
        commands.look();
        if (events.look()) ++counts->hellos;
    }
}

}  // namespace orvane::soak
