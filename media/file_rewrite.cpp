#include "media/file_rewrite.h"

namespace orvane {
namespace {

// Trivially destroyed: a command that closing has left behind may still hold a mark then.
struct State {
    SRWLOCK lock = SRWLOCK_INIT;
    unsigned marks = 0;
    HANDLE ended = nullptr;  // open while there are marks
};
constinit State state;

class StateLock {
public:
    StateLock() { AcquireSRWLockExclusive(&state.lock); }
    ~StateLock() { ReleaseSRWLockExclusive(&state.lock); }
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;
};

}  // namespace

FileRewrite::FileRewrite() {
    const StateLock lock;
    if (state.marks == 0) state.ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    m_marked = state.ended != nullptr;
    if (m_marked) ++state.marks;
}

FileRewrite::~FileRewrite() {
    const StateLock lock;
    if (!m_marked || --state.marks != 0) return;
    const UniqueHandle ended(std::exchange(state.ended, nullptr));
    SetEvent(ended.get());
}

bool FileRewrite::inProgress() {
    const StateLock lock;
    return state.marks != 0;
}

UniqueHandle FileRewrite::ended() {
    const StateLock lock;
    HANDLE own = nullptr;
    if (state.ended != nullptr)
        DuplicateHandle(GetCurrentProcess(), state.ended, GetCurrentProcess(), &own, SYNCHRONIZE,
                        FALSE, 0);
    return UniqueHandle(own);
}

}  // namespace orvane
