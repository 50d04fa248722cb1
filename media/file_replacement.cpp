#include "media/file_replacement.h"

#include <atomic>

#include "media/file_name.h"
#include "media/step_log.h"

namespace orvane {
namespace {

// Short, as the target's own name may be as long as names can be.
juce::String temporaryFileBeside(const juce::String& target) {
    static std::atomic<unsigned> number{0};
    const int drive = target.indexOfChar(':') == 1 ? 1 : -1;
    const juce::String folder =
        target.substring(0, juce::jmax(target.lastIndexOfAnyOf("\\/"), drive) + 1);
    return folder + "OrVane-" + juce::String(static_cast<juce::int64>(GetCurrentProcessId())) +
           "-" + juce::String(static_cast<int>(++number)) + ".tmp";
}

}  // namespace

FileReplacement::FileReplacement(const juce::String& target)
    : m_target(fileNameOf(target)), m_name(fileNameOf(temporaryFileBeside(target))) {}

FileReplacement::~FileReplacement() { DeleteFileW(m_name.c_str()); }

HRESULT FileReplacement::commit() {
    return MoveFileExW(m_name.c_str(), m_target.c_str(), MOVEFILE_REPLACE_EXISTING) ? S_OK
                                                                                    : lastResult();
}

}  // namespace orvane
