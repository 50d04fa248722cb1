#pragma once

#include <windows.h>

#include "platform/handles.h"

namespace orvane {

// Marks a media file as being rewritten, from before it is opened for writing until its changes
// are flushed: a process that ended in between could leave half a file. The player is asked to wait
// (IWMPPluginUI::GetProperty), and closing waits for the end of the rewrite. Marks may be made on
// any thread, several at once.
class FileRewrite {
public:
    // Without memory for the event the mark does not hold, and the file must not be opened.
    FileRewrite();
    ~FileRewrite();
    FileRewrite(const FileRewrite&) = delete;
    FileRewrite& operator=(const FileRewrite&) = delete;

    [[nodiscard]] explicit operator bool() const { return m_marked; }

    // Whether there is a mark now. Any thread.
    [[nodiscard]] static bool inProgress();

    // An event of the caller's own that is signalled when none of the marks is left; for
    // waitServingCalls. Empty while there is none to wait for. CreateEventW, DuplicateHandle.
    [[nodiscard]] static UniqueHandle ended();

private:
    bool m_marked;
};

}  // namespace orvane
