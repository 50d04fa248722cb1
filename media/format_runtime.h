#pragma once

#include <windows.h>

struct IWMMetadataEditor;
struct IWMSyncReader;

namespace orvane {

// A use of the Windows Media Format runtime (WMVCore.dll). The module is loaded by the first call
// that needs it and freed when the last use ends: the plug-in object has one for its whole life,
// each operation one of its own, so neither is the module loaded again for every track nor does it
// go under a running command. Nothing is freed at process exit or under the loader lock: a use
// always ends in ordinary code. Uses may come and go on any thread.
//
// What the calls return must be released before the use ends.
class FormatRuntime {
public:
    FormatRuntime();
    ~FormatRuntime();
    FormatRuntime(const FormatRuntime&) = delete;
    FormatRuntime& operator=(const FormatRuntime&) = delete;

    // WMCreateSyncReader without certificate and rights. A failure also when there is no runtime on
    // this Windows (the editions without media features); asked anew by each call.
    [[nodiscard]] HRESULT createSyncReader(IWMSyncReader** reader) const;

    // WMCreateEditor; failures as above.
    [[nodiscard]] HRESULT createEditor(IWMMetadataEditor** editor) const;

    // Whether the module is in memory now because of a use.
    [[nodiscard]] static bool isLoaded();
};

}  // namespace orvane
