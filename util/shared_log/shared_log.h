#pragma once

// The diagnostic log that all of the maker's processes on a machine share: one text file, a line a
// message. Linked in, it is what util/log writes to from the start, opened or not. A message is in
// the file when the call returns; one that cannot be written is dropped.

namespace orvane {

enum LogOption : unsigned {
    LOG_PID = 0x01,     // the process id on every line
    LOG_CONS = 0x02,    // the log's own troubles on standard output
    LOG_PERROR = 0x20,  // every line on standard error as well
};

// Sets the options and copies `ident` (may be null); `facility` is ignored. Opens nothing yet.
void openlog(const char* ident, unsigned option, int facility);

// Forgets ident and options and closes the log's mutex; a later message opens it again.
void closelog();

// closelog for the module's end, which waits for nobody: the mutex's handle is closed without
// taking the mutex. From then on a message is dropped where it would have to wait, and closes the
// log behind itself.
void closelog_on_exit();

}  // namespace orvane
