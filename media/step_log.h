#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include "util/log/log.h"

namespace orvane {

// Logs the failed steps of one operation on one file: one line each, with the operation, the step,
// the file and the result. For one thread.
class StepLog {
public:
    // `operation` ("Class::method") is a literal.
    StepLog(const char* operation, juce::String path)
        : m_operation(operation), m_path(std::move(path)) {}

    [[nodiscard]] const char* operation() const { return m_operation; }
    [[nodiscard]] const juce::String& path() const { return m_path; }

    // Whether the step succeeded; logs a failure.
    bool ok(const char* step, HRESULT result) const {
        if (FAILED(result))
            syslog(LOG_ERR, "%s: %s failed for %s (0x%08x)", m_operation, step, m_path.toRawUTF8(),
                   static_cast<unsigned>(result));
        return SUCCEEDED(result);
    }

private:
    const char* m_operation;
    juce::String m_path;
};

// The thread's last error as an HRESULT; E_FAIL when the failed call has set no error.
[[nodiscard]] inline HRESULT lastResult() {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

}  // namespace orvane
