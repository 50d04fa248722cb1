// The other process of the log's tests: does one thing to the shared log and ends.
//   write IDENT THREADS LINES  each thread writes LINES long lines
//   die                        ends in the middle of a line, holding the lock
//   exit                       writes before and after closelog_on_exit; fails when the lock
//                              outlives the message
//   loud                       one line with LOG_CONS and LOG_PERROR

#include "util/log/log.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "util/shared_log/log_lock.h"
#include "util/shared_log/shared_log.h"

namespace {

using namespace orvane;

bool lockExists() {
    const HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, logMutexName());
    if (mutex != nullptr) CloseHandle(mutex);
    return mutex != nullptr;
}

int writeLines(const char* ident, int threads, int lines) {
    openlog(ident, LOG_PID, 0);
    std::vector<std::jthread> writers;
    writers.reserve(static_cast<std::size_t>(threads));
    for (int thread = 0; thread < threads; ++thread) {
        writers.emplace_back([=] {
            const std::string body(500, static_cast<char>('a' + thread));
            for (int line = 0; line < lines; ++line) syslog(LOG_ERR, "%d %s.", line, body.c_str());
        });
    }
    writers.clear();
    closelog();
    return 0;
}

int dieHoldingTheLock() {
    LogLock lock;
    if (!lock.make()) return 1;
    if (lock.acquire("die", INFINITE) != LogLock::Wait::owned) return 1;
    TerminateProcess(GetCurrentProcess(), 7);
    return 1;
}

int logOnExit() {
    if (lockExists()) return 10;  // somebody else's: this test needs the machine to itself
    syslog(LOG_ERR, "before");
    if (!lockExists()) return 11;
    closelog_on_exit();
    if (lockExists()) return 12;
    syslog(LOG_ERR, "after");
    return lockExists() ? 13 : 0;
}

int writeLoudly() {
    openlog("Loud", LOG_PID | LOG_CONS | LOG_PERROR, 0);
    syslog(LOG_WARNING, "%s", "heard");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "write" && argc == 5) {
        return writeLines(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    }
    if (command == "die") return dieHoldingTheLock();
    if (command == "exit") return logOnExit();
    if (command == "loud") return writeLoudly();
    return 2;
}
