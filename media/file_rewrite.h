#pragma once

#include <windows.h>

#include "platform/handles.h"

namespace orvane {

// Marks that a media file is being rewritten, from before it is opened for writing until it is
// flushed. If the process ended meanwhile, the file could be damaged: so the player is asked to
// wait (IWMPPluginUI::GetProperty), and closing waits for the rewrite. Any thread; several marks
// may exist at once.
class FileRewrite {
public:
    // Converts to false when memory is short; the file must not be opened then.
    FileRewrite();
    ~FileRewrite();
    FileRewrite(const FileRewrite&) = delete;
    FileRewrite& operator=(const FileRewrite&) = delete;

    [[nodiscard]] explicit operator bool() const { return m_marked; }

    // Whether a mark exists. Any thread.
    [[nodiscard]] static bool inProgress();

    // An event, owned by the caller, that is signalled when the last mark has ended; for
    // waitServingCalls(). Empty when there is no mark. CreateEventW, DuplicateHandle.
    [[nodiscard]] static UniqueHandle ended();

private:
    bool m_marked;
};

}  // namespace orvane
