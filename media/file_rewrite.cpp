#include "media/file_rewrite.h"

#include "platform/srw_lock.h"

namespace orvane {
namespace {

// Trivially destroyed: a command that closing has left behind may still hold a mark then.
struct State {
    SRWLOCK lock = SRWLOCK_INIT;
    unsigned marks = 0;
    HANDLE ended = nullptr;  // open while there are marks
};
constinit State state;

}  // namespace

FileRewrite::FileRewrite() {
    const ExclusiveLock lock(state.lock);
    if (state.marks == 0) state.ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    m_marked = state.ended != nullptr;
    if (m_marked) ++state.marks;
}

FileRewrite::~FileRewrite() {
    const ExclusiveLock lock(state.lock);
    if (!m_marked || --state.marks != 0) return;
    const UniqueHandle ended(std::exchange(state.ended, nullptr));
    SetEvent(ended.get());
}

bool FileRewrite::inProgress() {
    const ExclusiveLock lock(state.lock);
    return state.marks != 0;
}

UniqueHandle FileRewrite::ended() {
    const ExclusiveLock lock(state.lock);
    HANDLE own = nullptr;
    if (state.ended != nullptr)
        DuplicateHandle(GetCurrentProcess(), state.ended, GetCurrentProcess(), &own, SYNCHRONIZE,
                        FALSE, 0);
    return UniqueHandle(own);
}

}  // namespace orvane
