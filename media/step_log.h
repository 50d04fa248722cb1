#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include "util/log/log.h"

namespace orvane {

// One operation on one file, for its log: each step that fails gives one line with the operation,
// the step, the file and the result. Belongs to one thread.
class StepLog {
public:
    // `operation` ("Class::method") is a literal.
    StepLog(const char* operation, juce::String path)
        : m_operation(operation), m_path(std::move(path)) {}

    [[nodiscard]] const char* operation() const { return m_operation; }
    [[nodiscard]] const juce::String& path() const { return m_path; }

    // Whether the step succeeded; logged otherwise.
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

// The thread's last error as a result; a failure even when the last call has left none.
[[nodiscard]] inline HRESULT lastResult() {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

}  // namespace orvane
