#pragma once

// The log file that all OrVane processes on a machine share: one text file, one line for each
// message. A program that links this library logs there from its start, also before openlog(). A
// message is in the file when the call returns; one that cannot be written is dropped.

namespace orvane {

enum LogOption : unsigned {
    LOG_PID = 0x01,     // the process id on every line
    LOG_CONS = 0x02,    // the log's own errors on standard output
    LOG_PERROR = 0x20,  // every line on standard error as well
};

// Sets the options and copies `ident` (may be null); `facility` is ignored. Opens nothing yet.
void openlog(const char* ident, unsigned option, int facility);

// Forgets ident and options and closes the log's mutex; a later message opens it again.
void closelog();

// closelog() for the module's unloading: it closes the mutex's handle without taking the mutex, so
// it never waits. A later message opens and closes the log for itself, and is dropped when it would
// have to wait.
void closelog_on_exit();

}  // namespace orvane
