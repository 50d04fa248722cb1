#pragma once

#include <windows.h>

struct IWMMetadataEditor;
struct IWMSyncReader;

namespace orvane {

// A counted use of the Windows Media Format runtime (WMVCore.dll). The first call that needs the
// runtime loads it; the end of the last use frees it. The plug-in object has a use for its whole
// life, so that the runtime is not loaded again for each track; each operation has one too, so that
// it is not freed while a command runs. A use must not end at process exit or under the loader
// lock. Any thread.
//
// The caller releases the returned objects before the use ends.
class FormatRuntime {
public:
    FormatRuntime();
    ~FormatRuntime();
    FormatRuntime(const FormatRuntime&) = delete;
    FormatRuntime& operator=(const FormatRuntime&) = delete;

    // WMCreateSyncReader without certificate and rights. Fails also when this Windows has no
    // Windows Media Format runtime (editions without media features); each call tries again.
    [[nodiscard]] HRESULT createSyncReader(IWMSyncReader** reader) const;

    // WMCreateEditor; failures as above.
    [[nodiscard]] HRESULT createEditor(IWMMetadataEditor** editor) const;

    // Whether a use has loaded the runtime.
    [[nodiscard]] static bool isLoaded();
};

}  // namespace orvane
